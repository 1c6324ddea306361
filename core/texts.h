// Texts of the interface that are looked up by key.
#pragma once

// The text of a key ("txt_003"), UTF-8; an empty text for a key that does not exist.
const char* text_get(const char* key);

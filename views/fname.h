// Conversion between the bytes of a name on disk and the UTF-8 that the interface shows.
#pragma once

// Opens the converter of the named character set for gConfig's mode; an empty or unknown name means none.
void fname_set_translation(const char* charset);

// True when the named character set opens on this machine.
bool fname_charset_opens(const char* charset);

// Display text to on-disk bytes; null when that fails. The result is the argument itself or a buffer of this
// thread that the next call overwrites.
const char* fname_encode(const char* text);

// On-disk bytes to display text, always valid UTF-8 in the default mode. A name that cannot be shown
// faithfully comes back behind a "?" mark; *count (may be null) gets the number of replaced characters.
const char* fname_decode(const char* name, int* count = nullptr);

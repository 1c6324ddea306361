// The character sets offered for file names.
#pragma once

#include <string>
#include <vector>

// Those of the known sets that this machine's converter opens. Tried on the first call only.
const std::vector<std::string>& charset_names();

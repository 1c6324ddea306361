#include "views/charsets.h"

#include "views/fname.h"

namespace {
// Sets that file names were written in: each keeps the ASCII bytes and has no shift state.
constexpr const char* sKnown[] = {
    "ISO-8859-1",   "ISO-8859-2",   "ISO-8859-3",   "ISO-8859-4",   "ISO-8859-5",   "ISO-8859-6",
    "ISO-8859-7",   "ISO-8859-8",   "ISO-8859-9",   "ISO-8859-10",  "ISO-8859-11",  "ISO-8859-13",
    "ISO-8859-14",  "ISO-8859-15",  "ISO-8859-16",  "WINDOWS-1250", "WINDOWS-1251", "WINDOWS-1252",
    "WINDOWS-1253", "WINDOWS-1254", "WINDOWS-1255", "WINDOWS-1256", "WINDOWS-1257", "WINDOWS-1258",
    "KOI8-R",       "KOI8-U",       "KOI8-T",       "IBM437",       "IBM850",       "IBM852",
    "IBM855",       "IBM857",       "IBM860",       "IBM861",       "IBM862",       "IBM863",
    "IBM864",       "IBM865",       "IBM866",       "IBM869",       "MACINTOSH",    "MAC-CYRILLIC",
    "HP-ROMAN8",    "TIS-620",      "WINDOWS-874",  "VISCII",       "TCVN",         "ARMSCII-8",
    "GEORGIAN-PS",  "PT154",        "BIG5",         "BIG5-HKSCS",   "GB2312",       "GBK",
    "GB18030",      "EUC-TW",       "EUC-JP",       "SHIFT_JIS",    "WINDOWS-31J",  "EUC-KR",
    "UHC",          "JOHAB",
};
}  // namespace

const std::vector<std::string>& charset_names() {
  static const std::vector<std::string> sOpening = [] {
    std::vector<std::string> names;
    for (const char* name : sKnown) {
      if (fname_charset_opens(name)) names.emplace_back(name);
    }
    return names;
  }();
  return sOpening;
}

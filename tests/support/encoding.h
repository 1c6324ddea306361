// Names on disk in another character set, for one test.
#pragma once

#include <cstdio>

#include "core/state.h"
#include "views/fname.h"

struct Encoding {
  explicit Encoding(uint32_t mode, const char* charset = "") { set(mode, charset); }
  ~Encoding() { set(0, ""); }
  static void set(uint32_t mode, const char* charset) {
    gConfig->flags = (gConfig->flags & ~SET_ENC_MASK) | mode;
    snprintf(gConfig->encoding, sizeof gConfig->encoding, "%s", charset);
    fname_set_translation(charset);
  }
};

// Input histories: rings of at most 20 texts, newest first, one for each combo box.
#pragma once

#include <cstdint>
#include <string>

struct History {
  int32_t head = 0;  // slot of the newest entry, 0..19
  std::string entries[20];
  int32_t count = 0;   // 0..20
  uint32_t flags = 1;  // bit 0: changed since its combo box was last filled
};

extern History *gPathList, *gSpecList, *gWithList, *gCopyList, *gPatternList;

History* cl_read(const char* dir, const char* name);                      // never null
void cl_save(const History* history, const char* dir, const char* name);  // a failure is silent
void cl_add(History* history, const char* text);
const char* cl_get(const History* history, int n);  // from 1, the newest; null beyond the count
void cl_destroy(History* history);
// The position just after a leading "http://", "ftp://", "gopher://" or "file://"; null when there is none.
const char* cl_is_web_address(const char* text);
// The newest entry that begins with text, both without their web prefixes; null when there is none.
const char* cl_find_pattern(const History* history, const char* text);

void init_read_cboxs(const char* dir);
void init_save_cboxs(const char* dir);  // path, filter and pattern only
void init_destroy_cboxs();

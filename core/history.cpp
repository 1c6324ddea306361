#include "core/history.h"

#include <cstring>
#include <string_view>

#include "core/save_file.h"

History *gPathList, *gSpecList, *gWithList, *gCopyList, *gPatternList;

namespace {
constexpr int kDepth = 20;
constexpr size_t kLongestLine = 1022;  // bytes; a longer line is read as several entries

std::string& slot(History* history, int newest_first) {
  return history->entries[(history->head + newest_first) % kDepth];
}
const std::string& slot(const History* history, int newest_first) {
  return history->entries[(history->head + newest_first) % kDepth];
}

const char* without_web_prefix(const char* text) {
  const char* rest = cl_is_web_address(text);
  return rest ? rest : text;
}
}  // namespace

History* cl_read(const char* dir, const char* name) {
  auto* history = new History;
  std::string text;
  load_file(dir, name, kDepth * (kLongestLine + 1), &text);
  std::string_view rest = text;
  while (history->count < kDepth && !rest.empty()) {
    const size_t end = rest.find('\n');
    const size_t length = std::min(end == std::string_view::npos ? rest.size() : end, kLongestLine);
    // A line ends for its reader at its first NUL byte.
    history->entries[history->count++] = std::string(rest.substr(0, length)).c_str();
    rest.remove_prefix(length == end ? length + 1 : length);
  }
  return history;
}

void cl_save(const History* history, const char* dir, const char* name) {
  if (!history) return;
  std::string text;
  for (int i = 0; i < history->count; ++i) {
    const std::string& entry = slot(history, i);
    // What the format cannot hold would come back as several wrong entries.
    if (entry.size() > kLongestLine || entry.find('\n') != std::string::npos) continue;
    text += entry;
    text += '\n';
  }
  save_file(dir, name, text);
}

void cl_add(History* history, const char* text) {
  if (!history || !text) return;
  int found = 0;
  while (found < history->count && slot(history, found) != text) ++found;
  if (found == 0 && history->count > 0) return;
  const std::string added = text;  // text may be one of the entries
  if (found < history->count) {
    for (int i = found; i > 0; --i) slot(history, i) = std::move(slot(history, i - 1));
  } else {
    history->head = (history->head + kDepth - 1) % kDepth;
    if (history->count < kDepth) ++history->count;
  }
  slot(history, 0) = added;
  history->flags |= 1;
}

const char* cl_get(const History* history, int n) {
  if (!history || n < 1 || n > history->count) return nullptr;
  return slot(history, n - 1).c_str();
}

void cl_destroy(History* history) {
  delete history;
}

const char* cl_is_web_address(const char* text) {
  for (const char* prefix : {"http://", "ftp://", "gopher://", "file://"})
    if (std::strncmp(text, prefix, std::strlen(prefix)) == 0) return text + std::strlen(prefix);
  return nullptr;
}

const char* cl_find_pattern(const History* history, const char* text) {
  if (!history) return nullptr;
  text = without_web_prefix(text);
  const size_t length = std::strlen(text);
  for (int i = 0; i < history->count; ++i) {
    const char* entry = without_web_prefix(slot(history, i).c_str());
    if (std::strncmp(entry, text, length) == 0) return entry;
  }
  return nullptr;
}

void init_read_cboxs(const char* dir) {
  init_destroy_cboxs();
  gPathList = cl_read(dir, "goto.001");
  gSpecList = cl_read(dir, "fspec.001");
  if (gSpecList->count == 0) cl_add(gSpecList, "*");
  gWithList = cl_read(dir, "with.001");
  gCopyList = cl_read(dir, "copy.001");
  gPatternList = cl_read(dir, "pattern.001");
}

void init_save_cboxs(const char* dir) {
  cl_save(gPathList, dir, "goto.001");
  cl_save(gSpecList, dir, "fspec.001");
  cl_save(gPatternList, dir, "pattern.001");
}

void init_destroy_cboxs() {
  for (History** history : {&gPathList, &gSpecList, &gWithList, &gCopyList, &gPatternList}) {
    cl_destroy(*history);
    *history = nullptr;
  }
}

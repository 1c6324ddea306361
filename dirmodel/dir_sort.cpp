// One wrapper comparison feeds one merge sort. What an entry is compared by is put beside its pointer first:
// a comparison then looks at two small records that lie side by side, and a name is asked for once an id, not
// once a comparison.
//
// Every column but the name is sorted on a list that stands in name order already, with the place in that
// order as the tie-break. The size comparison is one-sided (it never says "smaller"): a merge sort asks only
// whether an entry of the left run may stay before one of the right run, and the left one has the lesser
// name, so the list comes out by size in both directions all the same.
#include "dirmodel/dir_sort.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/state.h"
#include "dirmodel/id_names.h"
#include "dirmodel/text.h"

dir_compare sSortFunction = dir_cmp_name;
int sSortOrder = 1;

namespace {
struct SortItem {
  DirEntry* entry;
  int64_t key;     // orders as the column does; for names the eight bytes behind their common beginning
  uint32_t rank;   // place in name order
  bool directory;  // and directories go first
  bool digits;     // the name is a number
};

template <class T>
int sign_of_difference(T a, T b) {
  return a < b ? -1 : a > b;
}

// What the wrapper needs to know of the sort that is under way.
struct SortRun {
  dir_compare primary = nullptr;
  bool by_key = false;   // keys hold what primary compares
  bool by_rank = false;  // there is a secondary comparison, and ranks hold its answer
  int _sort_direction = 1;

  int compare_primary(const SortItem& a, const SortItem& b) const {
    if (primary == dir_cmp_name) {
      if (a.digits && b.digits) return dir_compare_names(a.entry->name, b.entry->name);
      if (a.key != b.key) return static_cast<uint64_t>(a.key) < static_cast<uint64_t>(b.key) ? -1 : 1;
      return std::strcmp(a.entry->name, b.entry->name);
    }
    if (!by_key) return primary(*a.entry, *b.entry);
    if (primary == dir_cmp_size) return b.key > a.key ? 1 : 0;
    return sign_of_difference(a.key, b.key);
  }

  int _qsort_cmp(const SortItem& a, const SortItem& b) const {
    if (a.directory != b.directory) return a.directory ? -1 : 1;
    int r = compare_primary(a, b);
    if (r == 0) r = by_rank ? sign_of_difference(a.rank, b.rank) : std::strcmp(a.entry->name, b.entry->name);
    return r * _sort_direction;
  }
};

// Merges the neighbouring runs [begin, middle) and [middle, end) of from into to.
void merge_runs(const SortRun& run, const SortItem* from, SortItem* to, size_t begin, size_t middle,
                size_t end) {
  size_t left = begin, right = middle;
  for (size_t i = begin; i < end; ++i) {
    const bool take_left = right == end || (left < middle && run._qsort_cmp(from[left], from[right]) <= 0);
    to[i] = take_left ? from[left++] : from[right++];
  }
}

// A merge sort of our own: the library's qsort is one only while memory lasts, and with these comparisons
// nothing else gives a list in order. Stable, and safe with a comparison that contradicts itself.
void merge_sort(const SortRun& run, std::vector<SortItem>* items) {
  constexpr size_t kFirstRun = 8;
  const size_t n = items->size();
  std::vector<SortItem>& from = *items;
  for (size_t begin = 0; begin < n; begin += kFirstRun)
    for (size_t i = begin + 1; i < std::min(begin + kFirstRun, n); ++i) {
      const SortItem item = from[i];
      size_t at = i;
      for (; at > begin && run._qsort_cmp(from[at - 1], item) > 0; --at) from[at] = from[at - 1];
      from[at] = item;
    }
  std::vector<SortItem> other(n);
  for (size_t width = kFirstRun; width < n; width *= 2) {
    for (size_t begin = 0; begin < n; begin += 2 * width)
      merge_runs(run, from.data(), other.data(), begin, std::min(begin + width, n),
                 std::min(begin + 2 * width, n));
    from.swap(other);
  }
}

// The bytes that all names begin with.
size_t common_beginning(const std::vector<SortItem>& items) {
  const char* first = items.front().entry->name;
  size_t common = std::strlen(first);
  for (const SortItem& item : items) {
    size_t same = 0;
    while (same < common && item.entry->name[same] == first[same]) ++same;
    common = same;
  }
  return common;
}

void sort_by_name(std::vector<SortItem>* items, int direction) {
  if (items->empty()) return;
  const size_t common = common_beginning(*items);
  for (SortItem& item : *items) {
    const char* name = item.entry->name;
    unsigned char bytes[8] = {};
    std::memcpy(bytes, name + common, strnlen(name + common, sizeof bytes));
    uint64_t key = 0;
    for (unsigned char byte : bytes) key = key << 8 | byte;
    item.key = static_cast<int64_t>(key);
    item.digits = (*name == '\0' || (*name >= '0' && *name <= '9')) && misc_all_digits(name);
  }
  SortRun run;
  run.primary = dir_cmp_name;
  run._sort_direction = direction;
  merge_sort(run, items);
}

// Keys for texts that many entries share, the names of users and groups: the place of each text among them.
void key_by_names(std::vector<SortItem>* items, uint32_t (*id_of)(const DirEntry&),
                  void (*name_of)(uint32_t, char*)) {
  std::unordered_map<uint32_t, std::string> names;
  for (const SortItem& item : *items) {
    std::string& name = names[id_of(*item.entry)];
    if (!name.empty()) continue;
    char text[16];
    name_of(id_of(*item.entry), text);
    name = text;
  }
  std::vector<std::string> sorted;
  sorted.reserve(names.size());
  for (const auto& [id, name] : names) sorted.push_back(name);
  std::sort(sorted.begin(), sorted.end());
  std::unordered_map<uint32_t, int64_t> keys;
  for (const auto& [id, name] : names)
    keys[id] = std::lower_bound(sorted.begin(), sorted.end(), name) - sorted.begin();
  for (SortItem& item : *items) item.key = keys[id_of(*item.entry)];
}

// Keys for link texts: entries that have one in the order of the texts, then those without.
void key_by_links(std::vector<SortItem>* items) {
  std::vector<SortItem*> linked;
  for (SortItem& item : *items) {
    const bool has_text = (item.entry->flags & ENTRY_INFO) && item.entry->info;
    item.key = INT64_MAX;
    if (has_text) linked.push_back(&item);
  }
  std::sort(linked.begin(), linked.end(), [](const SortItem* a, const SortItem* b) {
    return std::strcmp(a->entry->info, b->entry->info) < 0;
  });
  for (size_t i = 0; i < linked.size(); ++i) {
    const bool same = i > 0 && std::strcmp(linked[i - 1]->entry->info, linked[i]->entry->info) == 0;
    linked[i]->key = same ? linked[i - 1]->key : static_cast<int64_t>(i);
  }
}

// Fills in the keys of a column. False for a comparison that is none of the columns'.
bool make_keys(std::vector<SortItem>* items, dir_compare compare) {
  if (compare == dir_cmp_user)
    key_by_names(
        items, [](const DirEntry& entry) { return entry.st.st_uid; }, dir_get_username);
  else if (compare == dir_cmp_group)
    key_by_names(
        items, [](const DirEntry& entry) { return entry.st.st_gid; }, dir_get_groupname);
  else if (compare == dir_cmp_link)
    key_by_links(items);
  else if (compare == dir_cmp_size)
    for (SortItem& item : *items) item.key = item.entry->st.st_size;
  else if (compare == dir_cmp_date)
    for (SortItem& item : *items) item.key = item.entry->st.st_mtime;
  else if (compare == dir_cmp_permissions)
    for (SortItem& item : *items) item.key = item.entry->st.st_mode;
  else
    return false;
  return true;
}

int compare_texts_of_ids(uint32_t a, uint32_t b, void (*name_of)(uint32_t, char*)) {
  char names[2][16];
  name_of(a, names[0]);
  name_of(b, names[1]);
  return std::strcmp(names[0], names[1]);
}
}  // namespace

int dir_compare_names(const char* a, const char* b) {
  if (!misc_all_digits(a) || !misc_all_digits(b)) return std::strcmp(a, b);
  a += std::strspn(a, "0");
  b += std::strspn(b, "0");
  const int longer = sign_of_difference(std::strlen(a), std::strlen(b));
  return longer ? longer : std::strcmp(a, b);
}

int dir_cmp_name(const DirEntry& a, const DirEntry& b) {
  return dir_compare_names(a.name, b.name);
}

int dir_cmp_size(const DirEntry& a, const DirEntry& b) {
  return b.st.st_size > a.st.st_size ? 1 : 0;  // one-sided, as it always was
}

int dir_cmp_date(const DirEntry& a, const DirEntry& b) {
  return sign_of_difference(a.st.st_mtime, b.st.st_mtime);
}

int dir_cmp_user(const DirEntry& a, const DirEntry& b) {
  return compare_texts_of_ids(a.st.st_uid, b.st.st_uid, dir_get_username);
}

int dir_cmp_group(const DirEntry& a, const DirEntry& b) {
  return compare_texts_of_ids(a.st.st_gid, b.st.st_gid, dir_get_groupname);
}

int dir_cmp_permissions(const DirEntry& a, const DirEntry& b) {
  return sign_of_difference(a.st.st_mode, b.st.st_mode);
}

int dir_cmp_link(const DirEntry& a, const DirEntry& b) {
  if (!(a.flags & b.flags & ENTRY_INFO) || !a.info || !b.info) return 0;
  return std::strcmp(a.info, b.info);
}

int dir_cmp_dir(const DirEntry& a, const DirEntry& b) {
  return dir_entry_is_directory(b) - dir_entry_is_directory(a);
}

void dir_sort(DirRecord* dir, dir_compare compare, int ascending) {
  if (!compare || dir->count == 0) return;
  const DirEntry* current =
      dir->current >= 0 && dir->current < dir->count ? dir->entries[dir->current] : nullptr;
  const int direction = ascending ? 1 : -1;
  std::vector<SortItem> items(static_cast<size_t>(dir->count));
  for (size_t i = 0; i < items.size(); ++i) {
    items[i].entry = dir->entries[i];
    items[i].directory = gConfig->cdirs && dir_entry_is_directory(*dir->entries[i]);
  }
  sort_by_name(&items, compare == dir_cmp_name ? direction : 1);
  if (compare != dir_cmp_name) {
    for (size_t i = 0; i < items.size(); ++i) items[i].rank = static_cast<uint32_t>(i);
    SortRun run;
    run.primary = compare;
    run.by_key = make_keys(&items, compare);
    run.by_rank = true;
    run._sort_direction = direction;
    merge_sort(run, &items);
  }
  for (size_t i = 0; i < items.size(); ++i) {
    dir->entries[i] = items[i].entry;
    if (items[i].entry == current) dir->current = static_cast<int32_t>(i);
  }
}

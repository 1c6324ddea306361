#include "dirmodel/dir_sort.h"

#include <cstring>
#include <random>

#include "core/state.h"
#include "tests/support/shown_dir.h"

struct SortRecord : DirRecord {
  ~SortRecord() { dir_free(this); }
  std::string order(dir_compare compare, int ascending) {
    dir_sort(this, compare, ascending);
    std::string all;
    for (int i = 0; i < count; ++i) all += std::string(entries[i]->name) + " ";
    return all;
  }
};

TEST(DirSort, NamesOfDigitsAreNumbers) {
  const auto sign = [](const std::string& pair) {
    const std::string a = pair.substr(0, pair.find(' ')), b = pair.substr(a.size() + 1);
    const int order = dir_compare_names(a.c_str(), b.c_str()), back = dir_compare_names(b.c_str(), a.c_str());
    return order < 0 && back > 0 ? "<" : order > 0 && back < 0 ? ">" : order == back ? "=" : "?";
  };
  EXPECT_EQ(each<std::string>({"9 10", "10 abc", "file9 file10", "B abc", "007 7", " 1", "a \xff", "-1 1",
                               "2147483648 0", "99999999999999999999 100000000000000000000"},
                              sign),
            "<|<|>|<|=|<|<|<|>|<|");
}

TEST(DirSort, FoldersFirstInBothDirections) {
  for (const int folders_first : {0, 1}) {
    SortRecord record;
    gConfig->cdirs = folders_first;
    for (const char* name : {"b", "D", "a", "10", "9", "c"})
      record_add(&record, name, 0, *name == 'D' || *name == 'c' ? S_IFDIR : S_IFREG);
    EXPECT_EQ(record.order(dir_cmp_name, 1), folders_first ? "D c 9 10 a b " : "9 10 D a b c ");
    record.current = 2;
    const DirEntry* current = record.entries[2];
    EXPECT_EQ(record.order(dir_cmp_name, 0), folders_first ? "c D b a 10 9 " : "c b a D 10 9 ");
    EXPECT_EQ(record.entries[record.current], current);
  }
  gConfig->cdirs = 0;
}

TEST(DirSort, SizesComeOutInOrderInBothDirections) {
  std::mt19937_64 random(20240607);
  for (const int64_t spread : {int64_t{3}, int64_t{1} << 40}) {
    SortRecord record;
    for (int i = 0; i < 6000; ++i) {  // some all-digit names, whose order is another
      const std::string number = std::to_string(random() % 1000000);
      record_add(&record, i % 10 == 0 ? number : "n" + number + "." + std::to_string(i),
                 static_cast<int64_t>(random() % spread));
    }
    for (const int ascending : {1, 0, 1}) {
      dir_sort(&record, dir_cmp_size, ascending);
      for (int i = 1; i < record.count; ++i) {
        const DirEntry &a = *record.entries[i - ascending], &b = *record.entries[i - !ascending];
        ASSERT_GE(a.st.st_size, b.st.st_size) << i;
        const bool tie = a.st.st_size == b.st.st_size && a.name[0] == 'n' && b.name[0] == 'n';
        ASSERT_TRUE(!tie || std::strcmp(a.name, b.name) < 0);
      }
    }
  }
}

TEST(DirSort, ColumnsSortBothWaysAndTiesByName) {
  SortRecord record;
  // Root's name stands behind any number.
  const std::tuple<const char*, const char*, int64_t, uid_t, mode_t> entries[] = {
      {"c", "", -5, 0, S_IFREG | 0644},         {"e", "m", 3000000000, 4000000000, S_IFDIR | 0755},
      {"b", "z", 0, 70000, S_IFREG | 0600},     {"d", "m", 0, 0, S_IFREG | 0644},
      {"a", "", 7, 4000000000, S_IFREG | 0600},
  };
  for (const auto& [name, link, time, id, mode] : entries) {
    DirEntry* added = record_add(&record, name, 0, mode);
    added->st.st_mtime = time;
    added->st.st_uid = added->st.st_gid = id;
    if (!*link) continue;
    added->flags = ENTRY_INFO;
    dir_set_info(added, link);
  }
  const std::pair<dir_compare, const char*> rows[] = {
      // up and down
      {dir_cmp_date, "c b d a e e a d b c "}, {dir_cmp_permissions, "e a b c d d c b a e "},
      {dir_cmp_user, "a e b c d d c b e a "}, {dir_cmp_group, "a e b c d d c b e a "},
      {dir_cmp_link, "d e b a c c a b e d "},
  };
  for (const auto& [column, orders] : rows) {
    const std::string up = record.order(column, 1);
    EXPECT_EQ(up + record.order(column, 0), orders);
  }
}

#include "dirmodel/dir_sort.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "core/state.h"

namespace {
struct SortRecord : DirRecord {
  ~SortRecord() { dir_free(this); }
  DirEntry* add(const std::string& name, int64_t size = 0, mode_t mode = S_IFREG | 0644) {
    DirEntry* entry = dir_take_entry(this);
    std::strcpy(entry->name, name.c_str());
    entry->st.st_size = size;
    entry->st.st_mode = mode;
    dir_store_entry(this, entry);
    return entry;
  }
  std::string order(dir_compare compare, int ascending) {
    dir_sort(this, compare, ascending);
    std::string all;
    for (int i = 0; i < count; ++i) all += std::string(entries[i]->name) + " ";
    return all;
  }
};

// A column's own comparison behind a name that the sort does not know: it must then take every step through
// it.
template <int (*column)(const DirEntry&, const DirEntry&)>
int plain(const DirEntry& a, const DirEntry& b) {
  return column(a, b);
}
}  // namespace

TEST(DirSort, NamesOfDigitsAreNumbers) {
  const std::string big = "99999999999999999999", bigger = "100000000000000000000";
  const struct {
    std::string a, b;
    int sign;
  } rows[] = {{"9", "10", -1},   {"10", "abc", -1}, {"file9", "file10", 1}, {"B", "abc", -1},
              {big, bigger, -1}, {"007", "7", 0},   {"", "1", -1},          {"", "0", 0},
              {"a", "\xff", -1}, {"9", "1a", 1},    {"-1", "1", -1},        {"2147483648", "0", 1}};
  const auto sign = [](int value) { return (value > 0) - (value < 0); };
  for (const auto& row : rows) {
    EXPECT_EQ(sign(dir_compare_names(row.a.c_str(), row.b.c_str())), row.sign) << row.a << " " << row.b;
    EXPECT_EQ(sign(dir_compare_names(row.b.c_str(), row.a.c_str())), -row.sign) << row.a << " " << row.b;
  }
}

TEST(DirSort, FoldersFirstInBothDirections) {
  for (const int folders_first : {0, 1}) {
    SortRecord record;
    gConfig->cdirs = folders_first;
    for (const char* name : {"b", "D", "a", "10", "9", "c"})
      record.add(name, 0, *name == 'D' || *name == 'c' ? S_IFDIR : S_IFREG);
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
      record.add(i % 10 == 0 ? number : "n" + number + "." + std::to_string(i),
                 static_cast<int64_t>(random() % spread));
    }
    for (const dir_compare compare : {dir_cmp_size, plain<dir_cmp_size>})
      for (const int ascending : {1, 0, 1}) {
        dir_sort(&record, compare, ascending);
        for (int i = 1; i < record.count; ++i) {
          const DirEntry &a = *record.entries[i - ascending], &b = *record.entries[i - !ascending];
          ASSERT_GE(a.st.st_size, b.st.st_size) << i;
          if (a.st.st_size == b.st.st_size && a.name[0] == 'n' && b.name[0] == 'n') {
            ASSERT_LT(std::strcmp(a.name, b.name), 0);
          }
        }
      }
  }
}

TEST(DirSort, KeyedColumnsGiveTheOrderOfTheirComparisons) {
  const std::pair<dir_compare, dir_compare> columns[] = {{dir_cmp_date, plain<dir_cmp_date>},
                                                         {dir_cmp_permissions, plain<dir_cmp_permissions>},
                                                         {dir_cmp_user, plain<dir_cmp_user>},
                                                         {dir_cmp_group, plain<dir_cmp_group>},
                                                         {dir_cmp_size, plain<dir_cmp_size>}};
  std::mt19937 random(7);
  SortRecord record;
  for (int i = 0; i < 2000; ++i) {
    DirEntry* entry =
        record.add("n" + std::to_string(i), random() % 50, random() % 9 ? S_IFREG | random() % 3 : S_IFDIR);
    entry->st.st_mtime = static_cast<int64_t>(random() % 5) * 3000000000 - 6000000000;
    entry->st.st_uid = random() % 4 * 5;
    entry->st.st_gid = random() % 4 ? random() % 8 : 4000000000u;
  }
  for (const int folders_first : {0, 1})
    for (const auto& [keyed, compared] : columns)
      for (const int ascending : {0, 1}) {
        gConfig->cdirs = folders_first;
        const std::string order = record.order(keyed, ascending);
        dir_sort(&record, dir_cmp_name, random() & 1);
        EXPECT_EQ(record.order(compared, ascending), order);
      }
  gConfig->cdirs = 0;
}

TEST(DirSort, LinksStandTogetherByTheirTexts) {
  SortRecord record;
  for (const char* name : {"a", "b", "c", "d", "e"}) record.add(name);
  const std::pair<int, const char*> texts[] = {{1, "z"}, {3, "m"}, {4, "m"}};
  for (const auto& [i, text] : texts) {
    record.entries[i]->flags = ENTRY_INFO;
    dir_set_info(record.entries[i], text);
  }
  EXPECT_EQ(record.order(dir_cmp_link, 1), "d e b a c ");
  EXPECT_EQ(record.order(dir_cmp_link, 0), "c a b e d ");
}

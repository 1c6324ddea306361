#include "commands/properties.h"

#include <atomic>
#include <thread>

#include "tests/support/shown_dir.h"

namespace {
// gDir with entries that are all selected, without reading a directory.
class Properties : public testing::Test {
 protected:
  Properties() { gDir.path = dir_.path(); }
  ~Properties() override { dir_free(&gDir); }

  // Lists an entry as it stands, or one of which only the record exists.
  DirEntry* list(const std::string& name, mode_t mode = 0, int64_t size = 0) {
    DirEntry* entry = record_add(&gDir, name, size, mode);
    (void)!stat64((dir_ / name).c_str(), &entry->st);
    entry->flags = ENTRY_SELECTED;
    return entry;
  }
  DirEntry* make(const std::string& name, mode_t mode, const std::string& text = "") {
    write_file(dir_ / name, text, mode);
    return list(name);
  }
  PropertyRecord gather() {
    PropertyRecord record;
    EXPECT_TRUE(prop_gather(gDir, &record));
    return record;
  }
  // Lists one file of that mode alone and applies the change to it; the message.
  std::string change(mode_t mode, const PropertyChange& change) {
    dir_recycle_all(&gDir);
    unlink((dir_ / "f").c_str());
    make("f", mode);
    PropertyRecord record = gather();
    return prop_apply(&record, 0, change);
  }

  TempDir dir_;
};
}  // namespace

TEST_F(Properties, NamesOwnerAndBitsOfSeveral) {
  DirEntry* a = list(std::string(100, 'a'), S_IFREG | 0644, 3LL << 30);
  list(std::string(98, 'b'), S_IFREG | 0600, 1LL << 30)->st.st_gid = 1;
  list("d", S_IFDIR | 0700, 4096);
  PropertyRecord record = gather();
  EXPECT_EQ(record.comment, "(3 items: 1 directory, 2 files)");
  EXPECT_EQ(record.size, "4.198967296GB");
  EXPECT_EQ(record.mode & 07777u, 0600u);
  EXPECT_EQ(record.owner, "root");
  EXPECT_EQ(record.group, "");
  DirEntry* unread = list(std::string(46, 'c'));  // 102 + 100 + 3 + 48 are 253
  unread->st.st_uid = unread->st.st_gid = -1;
  list("d", a->st.st_mode);
  record = gather();
  EXPECT_EQ(record.mode & 07777u, 0600u) << "an unread entry takes no bit from the others";
  EXPECT_EQ(record.owner, "");
  EXPECT_EQ(record.name, std::string(100, 'a') + ", " + std::string(98, 'b') + ", d")
      << "ends at the first name that does not fit";
}

TEST_F(Properties, AppliesModesAndDropsTheStickyBit) {
  const mode_t rows[][3] = {{0644, 0600, 0600},  {01755, 0755, 0755}, {0755, 06755, 06755},
                            {06755, 0755, 0755}, {0644, 01644, 0644}, {01777, 01777, 0777}};
  for (const auto& [before, bits, after] : rows) {
    EXPECT_EQ(change(before, {"", "", "", bits}), "");
    EXPECT_EQ(mode_of(dir_ / "f"), after) << std::oct << before << " " << bits;
  }
}

TEST_F(Properties, RenamesOnlyToAFreeName) {
  dir_.shell("printf theirs >taken && ln -s nowhere dangling && mkdir folder");
  const DirEntry* entry = make("mine", 0644, "mine");
  const std::string too_long(256, 'x');
  const std::pair<std::string, std::string> rows[] = {{"", ""},
                                                      {"taken", "File name 'taken' already exists"},
                                                      {"folder", "File name 'folder' already exists"},
                                                      {"dangling", "File name 'dangling' already exists"},
                                                      {"no/way", "Unable to rename 'no/way'."},
                                                      {too_long, "Unable to rename '" + too_long + "'."}};
  PropertyRecord record = gather();
  for (const auto& [typed, message] : rows) {
    EXPECT_EQ(prop_apply(&record, 0, {typed, "", "", 0644}), message) << typed;
    EXPECT_EQ(read_file(dir_ / "mine") + read_file(dir_ / "taken"), "minetheirs") << typed;
  }
  EXPECT_EQ(prop_apply(&record, 0, {"-new 'name'\n", "", "", 0640}), "");
  EXPECT_EQ(read_file(dir_ / "-new 'name'\n"), "mine");
  EXPECT_STREQ(entry->name, "-new 'name'\n") << "the list still has the old name";
}

// Somebody else makes the very name again and again: no rename may ever take his file's place.
TEST_F(Properties, RenameNeverReplacesAFileThatAppearsMeanwhile) {
  make("mine", 0644, "mine");
  const std::string target = dir_ / "contested", own = dir_ / "theirs";
  std::atomic<bool> stop = false;
  std::atomic<int> lost = 0;
  std::thread other([&] {
    while (!stop) {
      write_file(own, "theirs");
      if (link(own.c_str(), target.c_str()) != 0) continue;
      if (read_file(target) != "theirs") lost++;
      unlink(target.c_str());
    }
  });
  for (int i = 0; i < 2000; i++) {
    PropertyRecord record = gather();
    if (!prop_apply(&record, 0, {"contested", "", "", 0644}).empty()) continue;
    EXPECT_EQ(prop_apply(&record, 0, {"mine", "", "", 0644}), "");
  }
  stop = true;
  other.join();
  EXPECT_EQ(lost, 0);
}

TEST_F(Properties, OwnerAndGroupTexts) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  const std::pair<PropertyChange, const char*> rows[] = {{{"", "", "", 0600}, "0 0 600\n"},
                                                         {{"", "1000", "1001", 0600}, "1000 1001 600\n"},
                                                         {{"", "4294967294", "", 0600}, "4294967294 0 600\n"},
                                                         {{"", "nobody", "root", 0600}, "65534 0 600\n"}};
  for (const auto& [wanted, after] : rows) {
    EXPECT_EQ(change(0644, wanted), "");
    EXPECT_EQ(dir_.shell("stat -c '%u %g %a' f"), after);
  }
  for (const std::string owner :
       {"12ab", "-1", " 5", "4294967295", "99999999999999999999999", "no such user", "%s%n"})
    EXPECT_EQ(change(0644, {"", owner, "", 0600}), "Invalid owner_id '" + owner + "'");
  EXPECT_EQ(change(0644, {"", "1000", "0x10", 0600}), "Invalid group '0x10'");
  EXPECT_EQ(mode_of(dir_ / "f"), 0644u) << "an error ends it";
  EXPECT_EQ(change(06755, {"", "1000", "", 06755}), "");
  EXPECT_EQ(mode_of(dir_ / "f"), 06755u) << "a change of the owner drops bits";
}

TEST_F(Properties, AppliesToTheEntryShownNotToItsIndex) {
  make("b", 0644);
  PropertyRecord record = gather();
  dir_recycle_all(&gDir);
  make("a", 0644);
  const DirEntry* shown = list("b");
  EXPECT_EQ(prop_apply(&record, 0, {"c", "", "", 0600}), "");
  EXPECT_EQ(mode_of(dir_ / "a"), 0644u);
  EXPECT_EQ(mode_of(dir_ / "c"), 0600u);
  EXPECT_STREQ(shown->name, "c");
}

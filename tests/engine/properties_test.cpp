#include "commands/properties.h"

#include <atomic>
#include <thread>

#include "tests/support/shown_dir.h"

// gDir with entries that are all selected, without reading a directory.
struct Properties : testing::Test {
  TempDir dir;
  Properties() { gDir.path = dir.path(); }
  ~Properties() override { dir_free(&gDir); }
  // Lists an entry as it stands, or one of which only the record exists.
  DirEntry* list(const std::string& name, mode_t mode = 0, int64_t size = 0) {
    DirEntry* entry = record_add(&gDir, name, size, mode);
    (void)!stat64((dir / name).c_str(), &entry->st);
    entry->flags = ENTRY_SELECTED;
    return entry;
  }
  DirEntry* make(const std::string& name, mode_t mode, const std::string& text = "") {
    write_file(dir / name, text, mode);
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
    unlink((dir / "f").c_str());
    make("f", mode);
    PropertyRecord record = gather();
    return prop_apply(&record, 0, change);
  }
};

TEST_F(Properties, NamesOwnerAndBitsOfSeveral) {
  DirEntry* a = list(std::string(100, 'a'), S_IFREG | 0644, 3LL << 30);
  list(std::string(98, 'b'), S_IFREG | 0600, 1LL << 30)->st.st_gid = 1;
  list("d", S_IFDIR | 0700, 4096);
  PropertyRecord record = gather();
  EXPECT_EQ(record.comment + record.size + record.owner + record.group,
            "(3 items: 1 directory, 2 files)4.198967296GBroot");
  EXPECT_EQ(record.mode & 07777u, 0600u);
  DirEntry* unread = list(std::string(46, 'c'));  // 102 + 100 + 3 + 48 are 253
  unread->st.st_uid = unread->st.st_gid = -1;
  list("d", a->st.st_mode);
  record = gather();
  EXPECT_EQ(record.mode & 07777u, 0600u) << "an unread entry takes no bit from the others";
  // The names end at the first that does not fit.
  EXPECT_EQ(record.owner + record.name, std::string(100, 'a') + ", " + std::string(98, 'b') + ", d");
}

TEST_F(Properties, AppliesModesAndDropsTheStickyBit) {
  const mode_t rows[][3] = {{0644, 0600, 0600},  {01755, 0755, 0755}, {0755, 06755, 06755},
                            {06755, 0755, 0755}, {0644, 01644, 0644}, {01777, 01777, 0777}};
  for (const auto& [before, bits, after] : rows)
    EXPECT_TRUE(change(before, {"", "", "", bits}).empty() && mode_of(dir / "f") == after)
        << std::oct << before;
}

TEST_F(Properties, RenamesOnlyToAFreeName) {
  dir.shell("printf theirs >taken && ln -s nowhere dangling && mkdir folder");
  const DirEntry* entry = make("mine", 0644, "mine");
  PropertyRecord record = gather();
  const auto renamed = [&](const std::string& typed) {
    return prop_apply(&record, 0, {typed, "", "", 0644}) + dir.shell("cat mine taken");
  };
  const std::string taken = "' already existsminetheirs|", too_long(256, 'x'), unable = "'.minetheirs|";
  EXPECT_EQ(each<std::string>({"", "taken", "folder", "dangling", "no/way", too_long}, renamed),
            "minetheirs|File name 'taken" + taken + "File name 'folder" + taken + "File name 'dangling" +
                taken + "Unable to rename 'no/way" + unable + "Unable to rename '" + too_long + unable);
  EXPECT_EQ(prop_apply(&record, 0, {"-new 'name'\n", "", "", 0640}), "");
  EXPECT_STREQ(entry->name, "-new 'name'\n");
  EXPECT_EQ(read_file(dir / entry->name), "mine");
}

// Somebody else makes the very name again and again: no rename may ever take his file's place.
TEST_F(Properties, RenameNeverReplacesAFileThatAppearsMeanwhile) {
  make("mine", 0644, "mine");
  const std::string target = dir / "contested", own = dir / "theirs";
  std::atomic<bool> stop = false;
  std::thread other([&] {
    while (!stop) {
      write_file(own, "theirs");
      if (link(own.c_str(), target.c_str()) != 0) continue;
      EXPECT_EQ(read_file(target), "theirs");
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
}

TEST_F(Properties, OwnerAndGroupTexts) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  using Owners = std::pair<const char*, const char*>;
  const auto given = [this](const Owners& owners) {
    const std::string message = change(0644, {"", owners.first, owners.second, 0600});
    return message + dir.shell("stat -c '%u %g %a' f | tr -d '\\n'");
  };
  EXPECT_EQ(
      each<Owners>({{"", ""}, {"1000", "1001"}, {"4294967294", ""}, {"nobody", "root"}, {"1000", "0x10"}},
                   given),
      "0 0 600|1000 1001 600|4294967294 0 600|65534 0 600|Invalid group '0x10'0 0 644|");
  for (const std::string owner :
       {"12ab", "-1", " 5", "4294967295", "99999999999999999999999", "no such user", "%s%n"})
    EXPECT_EQ(change(0644, {"", owner, "", 0600}), "Invalid owner_id '" + owner + "'");
  EXPECT_TRUE(change(06755, {"", "1000", "", 06755}).empty() && mode_of(dir / "f") == 06755u)
      << "bits are lost";
}

TEST_F(Properties, AppliesToTheEntryShownNotToItsIndex) {
  make("b", 0644);
  PropertyRecord record = gather();
  dir_recycle_all(&gDir);
  make("a", 0644);
  const DirEntry* shown = list("b");
  EXPECT_EQ(prop_apply(&record, 0, {"c", "", "", 0600}), "");
  EXPECT_EQ(dir.shell("stat -c '%n %a' *"), "a 644\nc 600\n");
  EXPECT_STREQ(shown->name, "c");
}

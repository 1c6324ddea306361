#include "commands/properties.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <ctime>
#include <memory>
#include <thread>

#include "core/state.h"
#include "dirmodel/dir_record.h"
#include "tests/support/temp_dir.h"
#include "views/fname.h"

namespace {

mode_t mode_of(const std::string& path) {
  struct stat64 status;
  return lstat64(path.c_str(), &status) == 0 ? status.st_mode & 07777u : 0xffff;
}

// gDir with entries that are all selected, without reading a directory.
class Properties : public testing::Test {
 protected:
  Properties() { gDir.path = dir_.path(); }
  ~Properties() override {
    gDir.entries = nullptr;
    gDir.count = 0;
    gDir.path.clear();
  }

  DirEntry* list(const std::string& name) {
    owned_.push_back(std::make_unique<DirEntry>());
    DirEntry* entry = owned_.back().get();
    *entry = DirEntry();
    snprintf(entry->name, sizeof entry->name, "%s", name.c_str());
    entry->flags = ENTRY_SELECTED;
    if (stat64((dir_ / name).c_str(), &entry->st) != 0) lstat64((dir_ / name).c_str(), &entry->st);
    pointers_.push_back(entry);
    gDir.entries = pointers_.data();
    gDir.count = static_cast<int32_t>(pointers_.size());
    return entry;
  }
  DirEntry* make(const std::string& name, mode_t mode, const std::string& text = "") {
    write_file(dir_ / name, text, mode);
    return list(name);
  }
  // An entry of which only the record exists.
  DirEntry* pretend(const std::string& name, mode_t mode, int64_t size = 0) {
    DirEntry* entry = list(name);
    entry->st.st_mode = mode;
    entry->st.st_size = size;
    return entry;
  }
  PropertyRecord gather() {
    PropertyRecord record;
    EXPECT_TRUE(prop_gather(gDir, &record));
    return record;
  }

  TempDir dir_;
  std::vector<std::unique_ptr<DirEntry>> owned_;
  std::vector<DirEntry*> pointers_;
};

}  // namespace

TEST_F(Properties, NothingSelectedShowsNothing) {
  make("a", 0644)->flags = 0;
  PropertyRecord record;
  EXPECT_FALSE(prop_gather(gDir, &record));
}

TEST_F(Properties, OneEntry) {
  make("first", 0600)->flags = 0;
  DirEntry* entry = pretend("a\xff", S_IFREG | 04751, 1234567);
  entry->st.st_mtime = 1700000000;
  setenv("TZ", "UTC", 1);
  tzset();
  entry->st.st_uid = 0;
  entry->st.st_gid = 3999999999u;
  const PropertyRecord record = gather();
  EXPECT_EQ(record.one_entry, 1);
  EXPECT_EQ(record.name, "?a?");
  EXPECT_EQ(record.size, "1,234,567");
  EXPECT_EQ(record.modified, "Tuesday November 14, 2023");
  EXPECT_EQ(record.location, dir_.path());
  EXPECT_EQ(record.owner, "root");
  EXPECT_EQ(record.group, "3999999999");
  EXPECT_EQ(record.mode & 07777u, 04751u);
  EXPECT_EQ(record.comment, "");
}

TEST_F(Properties, LinkTargetOnlyWhereItWasRead) {
  struct Row {
    uint8_t flags;
    mode_t mode;
    const char *info, *shown;
  };
  const Row rows[] = {
      {0, S_IFREG, nullptr, ""},
      {ENTRY_INFO, S_IFREG, "target", "target"},
      {ENTRY_INFO, S_IFDIR, "b\xff", "?b?"},
      {ENTRY_INFO | ENTRY_UNREAD, S_IFLNK, "dangling", "dangling"},
      {ENTRY_INFO | ENTRY_UNREAD, S_IFLNK, "(unable to read link info)", ""},
      {ENTRY_INFO | ENTRY_UNREAD, S_IFREG, "(unable to read link info)", ""},
      {ENTRY_INFO | ENTRY_UNREAD, 0, "(unable to read - timeout)", ""},
  };
  DirEntry* entry = pretend("link", 0);
  for (const Row& row : rows) {
    entry->flags = ENTRY_SELECTED | row.flags;
    entry->st.st_mode = row.mode;
    char info[1024] = "";
    if (row.info) strcpy(info, row.info);
    entry->info = row.info ? info : nullptr;
    EXPECT_EQ(gather().link, row.shown) << (row.info ? row.info : "none");
  }
}

TEST_F(Properties, SummaryAndTotalOfSeveral) {
  struct Row {
    std::vector<std::pair<mode_t, int64_t>> entries;
    const char *comment, *size;
  };
  constexpr int64_t gib = 1LL << 30;
  const Row rows[] = {
      {{{S_IFDIR, 4096}, {S_IFDIR, 4096}}, "(2 directories)", ""},
      {{{S_IFREG, 500}, {S_IFREG, 0}}, "(2 files)", "500 byte_count"},
      {{{S_IFDIR, 4096}, {S_IFREG, 512}, {S_IFREG, 512}, {S_IFREG, 512}},
       "(4 items: 1 directory, 3 files)",
       "1.512KB"},
      {{{S_IFDIR, 1}, {S_IFREG, 0}, {S_IFDIR, 1}}, "(3 items: 2 directories, 1 file)", ""},
      {{{S_IFREG, 3 * gib}, {S_IFREG, gib}}, "(2 files)", "4.198967296GB"},
  };
  for (const Row& row : rows) {
    pointers_.clear();
    for (const auto& [mode, size] : row.entries) pretend("n", mode, size);
    const PropertyRecord record = gather();
    EXPECT_EQ(record.one_entry, -1);
    EXPECT_EQ(record.comment, row.comment);
    EXPECT_EQ(record.size, row.size) << row.comment;
  }
}

TEST_F(Properties, NameListStopsAtTheFirstNameThatDoesNotFit) {
  pretend(std::string(100, 'a'), S_IFREG);
  pretend(std::string(100, 'b'), S_IFREG);
  pretend(std::string(47, 'c'), S_IFREG);  // 102 + 102 + 49 are 253
  pretend("d", S_IFREG);
  EXPECT_EQ(gather().name, std::string(100, 'a') + ", " + std::string(100, 'b'));
  pointers_[2]->name[46] = '\0';
  EXPECT_EQ(gather().name.size(), 100 + 2 + 100 + 2 + 46u);
}

TEST_F(Properties, CommonOwnerAndBits) {
  DirEntry* a = pretend("a", S_IFREG | 0644);
  DirEntry* b = pretend("b", S_IFREG | 0600);
  a->st.st_uid = b->st.st_uid = 0;
  a->st.st_gid = 0;
  b->st.st_gid = 1;
  PropertyRecord record = gather();
  EXPECT_EQ(record.mode & 07777u, 0600u);
  EXPECT_EQ(record.owner, "root");
  EXPECT_EQ(record.group, "");
  DirEntry* unread = pretend("c", 0);
  unread->st.st_uid = unread->st.st_gid = -1;
  record = gather();
  EXPECT_EQ(record.mode & 07777u, 0600u) << "an unread entry takes no bit from the others";
  EXPECT_EQ(record.owner, "");
}

TEST_F(Properties, AppliesModesAndDropsTheStickyBit) {
  struct Row {
    mode_t before, bits, after;
  };
  const Row rows[] = {{0644, 0644, 0644},  {0644, 0600, 0600}, {01755, 0755, 0755}, {0755, 06755, 06755},
                      {06755, 0755, 0755}, {0, 0777, 0777},    {0644, 01644, 0644}, {01777, 01777, 0777u}};
  for (const Row& row : rows) {
    pointers_.clear();
    make("f", row.before);
    PropertyRecord record = gather();
    EXPECT_EQ(prop_apply(&record, 0, {"", "", "", row.bits}), "");
    EXPECT_EQ(mode_of(dir_ / "f"), row.after) << std::oct << row.before << " " << row.bits;
  }
}

TEST_F(Properties, RenamesOnlyToAFreeName) {
  make("taken", 0644, "theirs");
  ASSERT_EQ(symlink("nowhere", (dir_ / "dangling").c_str()), 0);
  ASSERT_EQ(mkdir((dir_ / "folder").c_str(), 0755), 0);
  pointers_.clear();
  DirEntry* entry = make("mine", 0644, "mine");
  struct Row {
    std::string typed, message;
  };
  const std::string too_long(256, 'x');
  const Row rows[] = {
      {"mine", ""},
      {"", ""},
      {"taken", "File name 'taken' already exists"},
      {"folder", "File name 'folder' already exists"},
      {"dangling", "File name 'dangling' already exists"},
      {"no/way", "Unable to rename 'no/way'."},
      {too_long, "Unable to rename '" + too_long + "'."},
  };
  PropertyRecord record = gather();
  for (const Row& row : rows) {
    EXPECT_EQ(prop_apply(&record, 0, {row.typed, "", "", 0644}), row.message) << row.typed;
    EXPECT_EQ(read_file(dir_ / "mine"), "mine") << row.typed;
  }
  EXPECT_EQ(read_file(dir_ / "taken"), "theirs");
  EXPECT_EQ(prop_apply(&record, 0, {"-new 'name'\n", "", "", 0640}), "");
  EXPECT_EQ(read_file(dir_ / "-new 'name'\n"), "mine");
  EXPECT_EQ(mode_of(dir_ / "-new 'name'\n"), 0640u);
  EXPECT_STREQ(entry->name, "-new 'name'\n") << "the list still has the old name";
  EXPECT_EQ(record.entries[0].name, "-new 'name'\n");
}

// Somebody else makes the very name again and again: no rename may ever take his file's place.
TEST_F(Properties, RenameNeverReplacesAFileThatAppearsMeanwhile) {
  make("mine", 0644, "mine");
  const std::string target = dir_ / "contested";
  std::atomic<bool> stop = false;
  std::atomic<int> lost = 0;
  std::thread other([&] {
    const std::string own = dir_ / "theirs";
    while (!stop) {
      write_file(own, "theirs");
      if (link(own.c_str(), target.c_str()) != 0) continue;
      if (read_file(target) != "theirs") lost++;
      unlink(target.c_str());
    }
  });
  int refused = 0, renamed = 0;
  for (int i = 0; i < 2000; i++) {
    PropertyRecord record = gather();
    if (prop_apply(&record, 0, {"contested", "", "", 0644}).empty()) {
      renamed++;
      EXPECT_EQ(read_file(target), "mine");
      EXPECT_EQ(prop_apply(&record, 0, {"mine", "", "", 0644}), "");
    } else {
      refused++;
    }
  }
  stop = true;
  other.join();
  EXPECT_EQ(lost, 0);
  EXPECT_EQ(refused + renamed, 2000);
  EXPECT_EQ(read_file(dir_ / "mine"), "mine");
}

TEST_F(Properties, OwnerAndGroupTexts) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  struct Row {
    const char *owner, *group, *message;
    uid_t uid;
    gid_t gid;
  };
  const Row rows[] = {
      {"", "", "", 0, 0},
      {"1000", "1001", "", 1000, 1001},
      {"4294967294", "", "", 4294967294u, 0},
      {"root", "root", "", 0, 0},
      {"nobody", "", "", 65534, 0},
      {"12ab", "", "Invalid owner_id '12ab'", 0, 0},
      {"-1", "", "Invalid owner_id '-1'", 0, 0},
      {"+5", "", "Invalid owner_id '+5'", 0, 0},
      {" 5", "", "Invalid owner_id ' 5'", 0, 0},
      {"4294967295", "", "Invalid owner_id '4294967295'", 0, 0},
      {"4294967296", "", "Invalid owner_id '4294967296'", 0, 0},
      {"99999999999999999999999", "", "Invalid owner_id '99999999999999999999999'", 0, 0},
      {"no such user", "", "Invalid owner_id 'no such user'", 0, 0},
      {"", "no such group", "Invalid group 'no such group'", 0, 0},
      {"1000", "0x10", "Invalid group '0x10'", 0, 0},
      {"%s%n", "", "Invalid owner_id '%s%n'", 0, 0},
  };
  for (const Row& row : rows) {
    pointers_.clear();
    unlink((dir_ / "f").c_str());
    make("f", 0644);
    PropertyRecord record = gather();
    EXPECT_EQ(prop_apply(&record, 0, {"", row.owner, row.group, 0600}), row.message);
    struct stat status;
    ASSERT_EQ(stat((dir_ / "f").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, row.uid) << row.owner;
    EXPECT_EQ(status.st_gid, row.gid) << row.group;
    EXPECT_EQ(status.st_mode & 07777u, *row.message ? 0644u : 0600u) << "an error ends it: " << row.owner;
  }
}

TEST_F(Properties, ChangeOfOwnerKeepsTheSetIdBits) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  make("f", 06755);
  PropertyRecord record = gather();
  EXPECT_EQ(prop_apply(&record, 0, {"", "1000", "", 06755}), "");
  EXPECT_EQ(mode_of(dir_ / "f"), 06755u);
}

TEST_F(Properties, AFileThatVanished) {
  make("f", 0644);
  PropertyRecord record = gather();
  unlink((dir_ / "f").c_str());
  const PropertyChange other_owner{"", std::to_string(geteuid() + 1), "", 0644};
  EXPECT_EQ(prop_apply(&record, 0, {"", "", "", 0644}), "") << "there was nothing to change";
  EXPECT_EQ(prop_apply(&record, 0, {"", "", "", 0600}), "Unable to change permissions of 'f'");
  EXPECT_EQ(prop_apply(&record, 0, other_owner), "Unable to change ownership of 'f'");
  EXPECT_EQ(prop_apply(&record, 0, {"g", "", "", 0600}), "Unable to rename 'g'.");
}

// The list is read anew while the dialog is open, and another entry stands at the old index.
TEST_F(Properties, AppliesToTheEntryShownNotToItsIndex) {
  make("b", 0644);
  PropertyRecord record = gather();
  pointers_.clear();
  DirEntry* newcomer = make("a", 0644);
  DirEntry* shown = list("b");
  EXPECT_EQ(prop_apply(&record, 0, {"c", "", "", 0600}), "");
  EXPECT_EQ(mode_of(dir_ / "a"), 0644u);
  EXPECT_EQ(mode_of(dir_ / "c"), 0600u);
  EXPECT_STREQ(newcomer->name, "a");
  EXPECT_STREQ(shown->name, "c");
}

TEST_F(Properties, ANameThatCannotBeEncoded) {
  make("f", 0644);
  PropertyRecord record = gather();
  const uint32_t before = gConfig->flags;
  gConfig->flags = (before & ~SET_ENC_MASK) | SET_ENC_ALTERNATE;
  strcpy(gConfig->encoding, "KOI8-R");
  fname_set_translation("KOI8-R");
  EXPECT_EQ(prop_apply(&record, 0, {"\xe6\xbc\xa2", "", "", 0600}),
            "Unable to translate '\xe6\xbc\xa2' into 'KOI8-R' encoding.");
  EXPECT_EQ(mode_of(dir_ / "f"), 0644u);
  gConfig->flags = before;
  gConfig->encoding[0] = '\0';
  fname_set_translation("");
}

#include "core/walktree.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <set>

#include "tests/support/temp_dir.h"

TEST(Walktree, VisitsDirectoriesBeforeOrAfterAndFollowsNoLink) {
  const TempDir dir;
  std::filesystem::create_directories(dir / "a/b");
  write_file(dir / "a/b/file", "");
  std::filesystem::create_symlink(dir.path(), dir / "a/b/loop");
  for (const int dirs_first : {1, 0}) {
    std::vector<std::string> seen;
    const auto visit = [&](const char* path, const struct stat64& status) {
      seen.push_back(std::string(path).substr(dir.path().size()) + (S_ISLNK(status.st_mode) ? "@" : ""));
      return S_ISDIR(status.st_mode) ? -1 : 0;  // only a file's -1 ends the walk
    };
    EXPECT_EQ(misc_walktree((dir.path() + "/").c_str(), visit, dirs_first), 0);
    ASSERT_EQ(seen.size(), 5u);
    const std::vector<std::string> down{"/", "/a", "/a/b"}, up{"/a/b", "/a", "/"};
    if (dirs_first)
      EXPECT_TRUE(std::equal(down.begin(), down.end(), seen.begin()));
    else
      EXPECT_TRUE(std::equal(up.begin(), up.end(), seen.begin() + 2));
    const auto at = seen.begin() + (dirs_first ? 3 : 0);
    EXPECT_EQ((std::set<std::string>{at[0], at[1]}), (std::set<std::string>{"/a/b/file", "/a/b/loop@"}));
  }
}

TEST(Walktree, RefusesAndEnds) {
  const TempDir dir;
  write_file(dir / "file", "");
  std::filesystem::create_directories(dir / "sub/deeper");
  write_file(dir / "sub/deeper/stop", "");
  const auto never = [](const char*, const struct stat64&) { return 0; };
  EXPECT_EQ(misc_walktree((dir / "file").c_str(), never, 1), -1);
  EXPECT_EQ(misc_walktree((dir / "none").c_str(), never, 1), -1);
  std::vector<std::string> seen;
  const auto stop = [&](const char* path, const struct stat64&) {
    seen.push_back(path);
    return seen.back().ends_with("stop") ? -1 : 0;
  };
  EXPECT_EQ(misc_walktree((dir / "sub").c_str(), stop, 0), -1);
  EXPECT_EQ(seen.size(), 1u);  // no directory is visited after the end
}

TEST(Walktree, PassesOverWhatIsTooDeepForAPath) {
  const TempDir dir;
  const std::string name(200, 'd');
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  for (int level = 0; level < 8; ++level) {
    ASSERT_EQ(mkdir(name.c_str(), 0755), 0);
    ASSERT_EQ(chdir(name.c_str()), 0);
  }
  size_t longest = 0, count = 0;
  const auto measure = [&](const char* path, const struct stat64&) {
    longest = std::max(longest, std::strlen(path));
    return static_cast<int>(++count) * 0;
  };
  EXPECT_EQ(misc_walktree(dir.path().c_str(), measure, 1), 0);
  EXPECT_LT(longest, 1024u);
  EXPECT_GT(count, 4u);
}

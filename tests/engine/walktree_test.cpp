#include "core/walktree.h"

#include <algorithm>
#include <cstring>

#include "tests/support/temp_dir.h"

TEST(Walktree, VisitsDirectoriesBeforeOrAfterAndFollowsNoLink) {
  const TempDir dir;
  dir.shell("mkdir -p a/b && touch a/b/file && ln -s ../.. a/b/loop");
  for (const int dirs_first : {1, 0}) {
    std::vector<std::string> seen;
    const auto visit = [&](const char* path, const struct stat64& status) {
      seen.push_back(std::string(path).substr(dir.path().size()) + (S_ISLNK(status.st_mode) ? "@" : ""));
      return S_ISDIR(status.st_mode) ? -1 : 0;  // only a file's -1 ends the walk
    };
    EXPECT_EQ(misc_walktree((dir.path() + "/").c_str(), visit, dirs_first), 0);
    ASSERT_EQ(seen.size(), 5u);
    std::sort(seen.begin() + (dirs_first ? 3 : 0), seen.begin() + (dirs_first ? 5 : 2));
    const std::vector<std::string> down{"/", "/a", "/a/b", "/a/b/file", "/a/b/loop@"},
        up{"/a/b/file", "/a/b/loop@", "/a/b", "/a", "/"};
    EXPECT_EQ(seen, dirs_first ? down : up);
  }
}

TEST(Walktree, RefusesEndsAndPassesOverWhatIsTooDeepForAPath) {
  const TempDir dir;
  const std::string d(200, 'd');
  dir.shell("mkdir -p sub/deeper && touch sub/deeper/stop && for i in 1 2 3 4 5 6 7 8; do mkdir " + d +
            " && cd " + d + "; done");
  size_t longest = 0, count = 0;
  const auto visit = [&](const char* path, const struct stat64&) {
    longest = std::max(longest, std::strlen(path));
    ++count;
    return std::string(path).ends_with("stop") ? -1 : 0;
  };
  EXPECT_EQ(misc_walktree((dir / "none").c_str(), visit, 1), -1);
  EXPECT_EQ(misc_walktree((dir / "sub/deeper/stop").c_str(), visit, 1), -1);
  EXPECT_EQ(misc_walktree((dir / "sub").c_str(), visit, 0), -1);
  EXPECT_EQ(count, 1u);  // no directory is visited after the end
  EXPECT_EQ(misc_walktree((dir / d).c_str(), visit, 1), 0);
  EXPECT_LT(longest, 1024u);
  EXPECT_GT(count, 4u);
}

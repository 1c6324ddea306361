#include "core/walktree.h"

#include "tests/support/temp_dir.h"

TEST(WalkTree, VisitsWhatIsBelowFirstOrLastAndLinksAsFiles) {
  const TempDir dir;
  dir.shell("mkdir -p d/e && touch d/e/f && ln -s e d/e/l");
  for (const int dirs_first : {0, 1}) {
    std::string kinds;
    const auto visit = [&](const char* path, const struct stat64& status) {
      kinds += S_ISDIR(status.st_mode) ? std::string_view(path).back() : '.';
      return 0;
    };
    EXPECT_EQ(misc_walktree((dir / "d").c_str(), visit, dirs_first), 0);
    EXPECT_EQ(kinds, dirs_first ? "de.." : "..ed");
  }
  for (const char* path : {"d", "d/e/f"})
    EXPECT_EQ(misc_walktree((dir / path).c_str(), [](auto...) { return -1; }, 0), -1) << path;
}

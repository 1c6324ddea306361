#include "commands/symlink.h"

#include "tests/support/temp_dir.h"

TEST(Symlink, StepsByWhatStandsAtTheDestination) {
  TempDir dir, other;
  dir.shell("printf kept >file && mkdir folder && ln -s 'old target' link");
  const std::string fits(1026 - dir.path().size() - 2, 'x'), elsewhere = other / "y";
  using enum SymlinkStep;
  const struct {
    std::string source, destination;
    SymlinkStep step;
    const char *title, *text;
    bool by_path_manager = false, overwrite = false;
  } rows[] = {
      {"", "x", NOTHING, "", ""},
      {"file", "", NOTICE, "Input Error", "Symlink destination name must be entered!"},
      {"file", "file", NOTICE, "Symlink Error", "'file' exists and is not a symlink.\n"},
      // Between the question and its answer a file took the link's place.
      {"file", "file", NOTICE, "Symlink Error", "'file' exists and is not a symlink.\n", false, true},
      {"file", "link", ASK, "Symlink Exists",
       "The destination symlink exists.\nDo you want to overwrite it ?"},
      {"file", "link", NOTICE, "Symlink Error",
       "link: unable to create symlink\nError: Function not implemented\n", true, true},
      {"file", "no/way", NOTICE, "Symlink Error",
       "no/way: unable to create symlink\nError: No such file or directory\n"},
      // A target that does not fit is refused, not cut.
      {fits + "x", "new", NOTICE, "Symlink Error",
       "new: unable to create symlink\nError: File name too long\n"},
      {fits, "new", DONE, "", ""},
      {"-odd 'name'\n", "odd", DONE, "", ""},
      {"x", elsewhere, DONE, "", ""},
  };
  for (const auto& row : rows) {
    const SymlinkResult result =
        symlink_create(dir.path(), row.source, row.destination, row.by_path_manager, row.overwrite);
    EXPECT_EQ(result.step, row.step) << row.destination;
    EXPECT_EQ(result.title, row.title) << row.destination;
    EXPECT_EQ(result.text, row.text) << row.destination;
  }
  EXPECT_EQ(link_target(dir / "new"), dir / fits);
  EXPECT_EQ(link_target(dir / "odd"), dir / "-odd 'name'\n");
  EXPECT_EQ(link_target(elsewhere), dir / "x");
  EXPECT_EQ(link_target(dir / "link"), "old target") << "replaced without an answer, or by a failure";
  EXPECT_EQ(read_file(dir / "file"), "kept");
  EXPECT_EQ(symlink_create(dir.path(), "file", "link", false, true).step, DONE);
  EXPECT_EQ(link_target(dir / "link"), dir / "file");
}

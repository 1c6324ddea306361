#include "commands/symlink.h"

#include "tests/support/temp_dir.h"

TEST(Symlink, StepsByWhatStandsAtTheDestination) {
  TempDir dir, other;
  dir.shell("printf kept >file && mkdir folder && ln -s 'old target' link");
  const std::string fits(1026 - dir.path().size() - 2, 'x'), elsewhere = other / "y";
  using enum SymlinkStep;
  const std::string error = "Symlink Error|", unable = ": unable to create symlink\nError: ";
  const std::tuple<std::string, std::string, SymlinkStep, std::string, bool, bool> rows[] = {
      {"", "x", NOTHING, "|", false, false},
      {"file", "", NOTICE, "Input Error|Symlink destination name must be entered!", false, false},
      {"file", "file", NOTICE, error + "'file' exists and is not a symlink.\n", false, false},
      {"file", "file", NOTICE, error + "'file' exists and is not a symlink.\n", false, true},
      {"file", "link", ASK, "Symlink Exists|The destination symlink exists.\nDo you want to overwrite it ?",
       false, false},
      {"file", "link", NOTICE, error + "link" + unable + "Function not implemented\n", true, true},
      {"file", "no/way", NOTICE, error + "no/way" + unable + "No such file or directory\n", false, false},
      {fits + "x", "new", NOTICE, error + "new" + unable + "File name too long\n", false, false},
      {fits, "new", DONE, "|", false, false},
      {"-odd 'name'\n", "odd", DONE, "|", false, false},
      {"x", elsewhere, DONE, "|", false, false}};
  for (const auto& [source, destination, step, told, by_path_manager, overwrite] : rows) {
    const SymlinkResult result = symlink_create(dir.path(), source, destination, by_path_manager, overwrite);
    EXPECT_EQ(result.step, step) << destination;
    EXPECT_EQ(result.title + "|" + result.text, told) << destination;
  }
  // The old link was replaced neither without an answer nor by a failure.
  EXPECT_EQ(dir.shell("cat file; readlink new odd link '" + elsewhere + "'"),
            "kept" + dir / fits + "\n" + dir / "-odd 'name'\n" + "\nold target\n" + dir / "x\n");
  EXPECT_EQ(symlink_create(dir.path(), "file", "link", false, true).step, DONE);
  EXPECT_EQ(link_target(dir / "link"), dir / "file");
}

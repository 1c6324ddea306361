#include "commands/symlink.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/temp_dir.h"

namespace {

std::string target_of(const std::string& path) {
  char text[4096];
  const ssize_t length = readlink(path.c_str(), text, sizeof text);
  return length < 0 ? "" : std::string(text, length);
}

}  // namespace

TEST(Symlink, StepsByWhatStandsAtTheDestination) {
  TempDir dir;
  write_file(dir / "file", "kept");
  ASSERT_EQ(mkdir((dir / "folder").c_str(), 0700), 0);
  ASSERT_EQ(symlink("old target", (dir / "link").c_str()), 0);
  struct Row {
    const char *source, *destination;
    SymlinkStep step;
    const char *title, *text;
  };
  const Row rows[] = {
      {"", "x", SymlinkStep::NOTHING, "", ""},
      {"file", "", SymlinkStep::NOTICE, "Input Error", "Symlink destination name must be entered!"},
      {"file", "file", SymlinkStep::NOTICE, "Symlink Error", "'file' exists and is not a symlink.\n"},
      {"file", "folder", SymlinkStep::NOTICE, "Symlink Error", "'folder' exists and is not a symlink.\n"},
      {"file", "link", SymlinkStep::ASK, "Symlink Exists",
       "The destination symlink exists.\nDo you want to overwrite it ?"},
      {"file", "no/way", SymlinkStep::NOTICE, "Symlink Error",
       "no/way: unable to create symlink\nError: No such file or directory\n"},
      {"file", "new", SymlinkStep::DONE, "", ""},
      {"file", "folder/new", SymlinkStep::DONE, "", ""},
      {"-odd 'name'\n", "odd", SymlinkStep::DONE, "", ""},
  };
  for (const Row& row : rows) {
    const SymlinkResult result = symlink_create(dir.path(), row.source, row.destination, false, false);
    EXPECT_EQ(result.step, row.step) << row.destination;
    EXPECT_EQ(result.title, row.title) << row.destination;
    EXPECT_EQ(result.text, row.text) << row.destination;
  }
  EXPECT_EQ(target_of(dir / "new"), dir / "file");
  EXPECT_EQ(target_of(dir / "folder/new"), dir / "file");
  EXPECT_EQ(target_of(dir / "odd"), dir / "-odd 'name'\n");
  EXPECT_EQ(target_of(dir / "link"), "old target") << "replaced without an answer";
  EXPECT_EQ(read_file(dir / "file"), "kept");
}

TEST(Symlink, AnAbsoluteDestinationStandsAsItIs) {
  TempDir dir, other;
  EXPECT_EQ(symlink_create(dir.path(), "x", other / "y", false, false).step, SymlinkStep::DONE);
  EXPECT_EQ(target_of(other / "y"), dir / "x");
}

TEST(Symlink, ReplacesTheOldLinkOnceAgreed) {
  TempDir dir;
  ASSERT_EQ(symlink("old target", (dir / "link").c_str()), 0);
  EXPECT_EQ(symlink_create(dir.path(), "file", "link", false, true).step, SymlinkStep::DONE);
  EXPECT_EQ(target_of(dir / "link"), dir / "file");
}

// Between the question and its answer a file took the link's place.
TEST(Symlink, AnswerDoesNotCoverAFileThatCameSince) {
  TempDir dir;
  write_file(dir / "link", "precious");
  const SymlinkResult result = symlink_create(dir.path(), "file", "link", false, true);
  EXPECT_EQ(result.step, SymlinkStep::NOTICE);
  EXPECT_EQ(read_file(dir / "link"), "precious");
}

TEST(Symlink, FailureLeavesTheOldLink) {
  TempDir dir;
  ASSERT_EQ(symlink("old target", (dir / "link").c_str()), 0);
  const SymlinkResult result = symlink_create(dir.path(), "file", "link", true, true);
  EXPECT_EQ(result.text, "link: unable to create symlink\nError: Function not implemented\n");
  EXPECT_EQ(target_of(dir / "link"), "old target");
}

TEST(Symlink, ATargetThatDoesNotFitIsRefusedNotCut) {
  TempDir dir;
  const std::string source(1026 - dir.path().size() - 1, 'x');
  EXPECT_EQ(symlink_create(dir.path(), source, "link", false, false).text,
            "link: unable to create symlink\nError: File name too long\n");
  EXPECT_FALSE(path_exists(dir / "link"));
  EXPECT_EQ(symlink_create(dir.path(), source.substr(1), "link", false, false).step, SymlinkStep::DONE);
}

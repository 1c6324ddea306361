#include <cstdlib>

#include "core/command_line.h"
#include "core/state.h"
#include "dirmodel/fs_probe.h"
#include "tests/support/hostile_tree.h"
#include "tests/support/temp_dir.h"

using Texts = std::vector<std::string>;

// Reads the command line "zan TEXT...".
static auto with_arguments(auto* reader, Texts texts) {
  texts.insert(texts.begin(), "zan");
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  return reader(static_cast<int>(texts.size()), pointers.data());
}

static std::string start_directory(const Texts& texts) {
  with_arguments(state_start_directory, texts);
  return fs_path_is_directory(gStartPath.c_str()) > 0 ? gStartPath : gStartElsewhere;
}

static CommandLine parsed(const Texts& texts) {
  return with_arguments(command_line_parse, texts);
}

TEST(Start, FindsTheStartDirectory) {
  TempDir dir;
  dir.shell("mkdir docs gone -- -odd && touch file");
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  const std::string& here = dir.path();
  EXPECT_EQ(start_directory({}), here);
  EXPECT_EQ(start_directory({"-x", "10", "/tmp"}), here);  // the scan knows nothing of values
  EXPECT_EQ(start_directory({"-x10", "-S", "--help", "docs"}), here + "/docs");
  for (const std::string& no_directory : Texts{"-odd", "file", "missing", "", std::string(5000, 'a')})
    EXPECT_EQ(start_directory({no_directory}), here) << no_directory;

  // Too far down for its name to be had: what is relative to it could not be read again.
  hostile_chain_make(here, 600);
  ASSERT_EQ(chdir(".."), 0);
  EXPECT_EQ(start_directory({"d"}), "/");
  ASSERT_EQ(chdir((dir / "gone").c_str()), 0);
  ASSERT_EQ(rmdir((dir / "gone").c_str()), 0);
  EXPECT_EQ(start_directory({}), "/");
}

TEST(Start, FindsOrCreatesTheSettingsDirectory) {
  const std::string create = "ZAN error: unable to create config directory ",
                    access = "ZAN error: unable to access config directory ";
  const std::tuple<std::string, std::string, unsigned> rows[] = {
      {"mkdir .vr", "", 0700},
      {"mkdir -p -m 755 .vr/zan", "", 0755},
      {"true", create, 0xffff},
      {"mkdir .vr; touch .vr/zan", access, 0644},
      {"mkdir .vr; ln -s nowhere .vr/zan", create, 0777}};
  umask(022);
  for (const auto& [prepare, message, mode] : rows)
    for (const bool relative : {false, true}) {
      TempDir dir;
      dir.shell("mkdir home && cd home && " + prepare);
      ASSERT_EQ(chdir(dir.path().c_str()), 0);
      const std::string home = relative ? "home" : dir / "home", path = dir / "home/.vr/zan";
      setenv("HOME", home.c_str(), 1);
      testing::internal::CaptureStderr();
      EXPECT_EQ(state_settings_directory(), message.empty() ? path : "") << prepare;
      EXPECT_EQ(testing::internal::GetCapturedStderr(), message.empty() ? "" : message + home + "/.vr/zan\n");
      EXPECT_EQ(mode_of(path), mode) << prepare;
    }
}

TEST(Start, ParsesItsOwnOptions) {
  const CommandLine line = parsed({"-x10", "-y", "-20", "-w300", "-h200", "-Sm", "-s:5", "/tmp", "-q"});
  EXPECT_TRUE(line.x == 10 && line.y == -20 && line.w == 300 && line.h == 200 && line.state == 'm');
  EXPECT_TRUE(line.server == ":5" && !line.bad) << "what follows the directory is ignored";
  EXPECT_TRUE(parsed({"-x10", "--version"}).version);
  const auto taken = [](const char* option) {
    const CommandLine one = parsed({option});
    return one.bad ? "bad" : one.x ? "x" : "";
  };
  EXPECT_EQ(each<const char*>(
                {"-q", "-q10", "--nonsense", "-x", "-xabc", "-Sz", "-x99999999999", "--", "-", "-x1"}, taken),
            "bad|bad|bad|bad||||||x|");
}

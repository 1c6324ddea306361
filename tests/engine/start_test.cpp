#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "core/command_line.h"
#include "core/state.h"
#include "tests/support/hostile_tree.h"
#include "tests/support/temp_dir.h"

namespace {
struct Arguments {
  std::vector<std::string> texts{"zan"};
  std::vector<char*> pointers;
  Arguments(std::initializer_list<std::string> more) { texts.insert(texts.end(), more); }
  int count() const { return static_cast<int>(texts.size()); }
  char** data() {
    pointers.clear();
    for (std::string& text : texts) pointers.push_back(text.data());
    return pointers.data();
  }
};
}  // namespace

TEST(Start, FindsTheStartDirectory) {
  TempDir dir;
  mkdir((dir / "docs").c_str(), 0700);
  mkdir((dir / "-odd").c_str(), 0700);
  write_file(dir / "file", "");
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  const std::string& here = dir.path();
  const std::pair<Arguments, std::string> rows[] = {
      {{}, here},
      {{"-x10", "/tmp"}, "/tmp"},
      {{"-x", "10", "/tmp"}, here},  // the scan knows nothing of values: "10" is the argument
      {{"-x10", "-S", "--help", "docs"}, here + "/docs"},
      {{"docs", "/tmp"}, here + "/docs"},
      {{"docs/"}, here + "/docs"},
      {{"./docs/../docs"}, here + "/./docs/../docs"},
      {{"-odd"}, here},
      {{"file"}, here},
      {{"missing"}, here},
      {{""}, here},
      {{std::string(5000, 'a')}, here},
  };
  for (auto [arguments, expected] : rows)
    EXPECT_EQ(state_start_directory(arguments.count(), arguments.data()), expected) << arguments.texts.back();

  // Too far down for its name to be had: what is relative to it could not be read again.
  hostile_chain_make(dir.path(), 600);
  for (int level = 0; level < 599; ++level) ASSERT_EQ(chdir("d"), 0);
  Arguments none{}, relative{"d"}, absolute{dir / "docs"};
  EXPECT_EQ(state_start_directory(relative.count(), relative.data()), "/");
  EXPECT_EQ(state_start_directory(absolute.count(), absolute.data()), dir / "docs");
  ASSERT_EQ(chdir(here.c_str()), 0);

  mkdir((dir / "gone").c_str(), 0700);
  ASSERT_EQ(chdir((dir / "gone").c_str()), 0);
  ASSERT_EQ(rmdir((dir / "gone").c_str()), 0);
  EXPECT_EQ(state_start_directory(none.count(), none.data()), "/");
  EXPECT_EQ(state_start_directory(relative.count(), relative.data()), "/");
}

TEST(Start, FindsOrCreatesTheSettingsDirectory) {
  struct Row {
    const char *what, *prepare, *message;  // message: null when the directory can be used
  };
  const Row rows[] = {
      {"parent there", "mkdir .vr", nullptr},
      {"all there", "mkdir -p .vr/zan", nullptr},
      {"parent missing", "true", "ZAN error: unable to create config directory "},
      {"a file", "mkdir .vr; touch .vr/zan", "ZAN error: unable to access config directory "},
      {"a dangling link", "mkdir .vr; ln -s nowhere .vr/zan",
       "ZAN error: unable to create config directory "},
      {"home is a file", "rm -r ../home; touch ../home", "ZAN error: unable to create config directory "},
  };
  for (const Row& row : rows) {
    TempDir dir;
    const std::string home = dir / "home", path = home + "/.vr/zan";
    run_shell("mkdir '" + home + "'; cd '" + home + "'; " + row.prepare);
    setenv("HOME", home.c_str(), 1);
    testing::internal::CaptureStderr();
    const std::string found = state_settings_directory();
    const std::string message = testing::internal::GetCapturedStderr();
    EXPECT_EQ(found, row.message ? "" : path) << row.what;
    EXPECT_EQ(message, row.message ? row.message + path + "\n" : "") << row.what;
    struct stat status;
    const bool created = !row.message && row.what[0] == 'p';
    ASSERT_EQ(stat(path.c_str(), &status) == 0 && (status.st_mode & 07777) == 0700, created) << row.what;
  }
}

TEST(Start, ARelativeHomeStaysTheOneOfTheStart) {
  TempDir dir;
  run_shell("mkdir -p '" + dir / "home/.vr" + "'");
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  setenv("HOME", "home", 1);
  EXPECT_EQ(state_settings_directory(), dir / "home/.vr/zan") << "created";
  EXPECT_EQ(state_settings_directory(), dir / "home/.vr/zan") << "found";
}

TEST(Start, ParsesItsOwnOptions) {
  Arguments joined{"-x10", "-y-20", "-w300", "-h200", "-Sm", "-s:5", "/tmp", "-q"};
  CommandLine line = command_line_parse(joined.count(), joined.data());
  EXPECT_FALSE(line.bad) << "what follows the directory is ignored";
  EXPECT_EQ(line.x, 10);
  EXPECT_EQ(line.y, -20);
  EXPECT_EQ(line.w, 300);
  EXPECT_EQ(line.h, 200);
  EXPECT_EQ(line.state, 'm');
  EXPECT_EQ(line.server, ":5");
  Arguments separate{"-x", "-10", "-S", "i"};
  line = command_line_parse(separate.count(), separate.data());
  EXPECT_EQ(line.x, -10);
  EXPECT_EQ(line.state, 'i');

  struct Row {
    Arguments arguments;
    bool bad, help, version;
  };
  Row rows[] = {
      {{"--help"}, false, true, false},
      {{"-x10", "--version"}, false, false, true},
      {{"-q"}, true, false, false},
      {{"-q10", "/tmp"}, true, false, false},
      {{"--nonsense"}, true, false, false},
      {{"-x"}, true, false, false},
      {{"-xabc", "-Sz"}, false, false, false},
      {{"-x99999999999"}, false, false, false},
      {{"--", "-q"}, false, false, false},
      {{"-", "-q"}, false, false, false},
  };
  for (Row& row : rows) {
    line = command_line_parse(row.arguments.count(), row.arguments.data());
    EXPECT_EQ(line.bad, row.bad) << row.arguments.texts[1];
    EXPECT_EQ(line.help, row.help) << row.arguments.texts[1];
    EXPECT_EQ(line.version, row.version) << row.arguments.texts[1];
    EXPECT_FALSE(line.x && row.arguments.texts[1] != "-x10") << row.arguments.texts[1];
  }
}

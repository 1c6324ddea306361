#include "commands/associations.h"

#include <algorithm>

#include "tests/support/shown_dir.h"
#include "tests/support/stand_ins.h"

using Call = StandIns::Call;
static const char kFile[] = "associate.003";
static const std::string kHeaderLine =
    "# <pattern[|pattern[..]]> \\t <open_command> \\t <view_command> \\t <edit command>\n";

static void read_text(const std::string& text) {
  static const TempDir dir;  // its end leaves the directory that is shown
  write_file(dir / kFile, text);
  init_read_associations(dir.path().c_str(), kFile);
}

static std::string table_text() {
  std::string text;
  for (int i = 0; i < apat_ctr; ++i) text += as_line(*apat[i]) + "\n";
  return text;
}

TEST(Associations, ReadsWhatStandsInTheFile) {
  const std::string fill(1016, 'f');
  const std::pair<std::string, std::string> rows[] = {
      {kHeaderLine, ""},
      {"*.a\to\tv\te\tfifth\tsixth", "*.a\to\tv\te\n"},  // no newline at the end
      {"# no\n*.a\to\n#no\n*.b\t\tv\n", "*.a\to\t\t\n*.b\t\tv\t\n"},
      {std::string("*.a\to\0lost\tv\n", 12), "*.a\to\t\t\n"},
      // 1023 bytes are one reading; what follows is a line of its own.
      {"*.a\to" + fill + "\t\tb\tp\n", "*.a\to" + fill + "\t\t\nb\tp\t\t\n"}};
  for (const auto& [text, table] : rows) {
    read_text(text);
    EXPECT_EQ(table_text(), table) << text;
  }
}

TEST(Associations, WritesWhatItReadsBack) {
  const TempDir dir;
  const std::string table = "*.a|*.b\topen @\tview\tedit '@'\n^*.c\t\tv\t\n";
  const std::string longest = "*.a\t" + std::string(1018, 'x');
  read_text(table);
  EXPECT_EQ(as_write(dir.path().c_str(), kFile), 0);
  EXPECT_EQ(read_file(dir / kFile), kHeaderLine + table);
  as_replace({"*.z\t\tview", longest, "*.y\topen"});
  EXPECT_EQ(as_write(dir.path().c_str(), kFile), 0);
  init_read_associations(dir.path().c_str(), kFile);
  EXPECT_EQ(table_text(), "*.z\t\tview\t\n" + longest + "\t\t\n*.y\topen\t\t\n");
}

TEST(Associations, LooksUpTheFirstThatMatches) {
  read_text("*.a|x?\to\tv\t \v\n^*.JPG|*.gif\to2\t\te2\n*.jpg\to3\tv3\te3\n");
  // Blanks are no command, and a later record's is not looked for.
  const std::tuple<const char*, int, std::string> rows[] = {
      {"f.a", 0, "o v -"}, {"p.jpg", 1, "o2 - e2"}, {"p.GIF", 1, "o2 - e2"}, {"f.A", -1, "- - -"}};
  for (const auto& [name, index, commands] : rows) {
    const auto command = [name = name](int selector) {
      const char* found = _get_pat_cmd(name, selector);
      return std::string(found ? found : "-");
    };
    EXPECT_EQ(_get_pat_idx(name), index) << name;
    EXPECT_EQ(command(AS_OPEN) + " " + command(AS_VIEW) + " " + command(AS_EDIT), commands) << name;
  }
}

TEST(Associations, OpenRunsEveryMatchOrTheFileItself) {
  ShownDir dir;
  StandIns programs;
  programs.add("terminal");
  read_text("*.a\tfirst\n*.b\tother\n[$x]*\tsecond @ end\n");
  EXPECT_EQ(as_open("x.a", 0100755), 2);
  std::vector<std::string> commands;
  for (const Call& call : programs.calls(2)) commands.push_back(call.back());
  std::sort(commands.begin(), commands.end());
  EXPECT_EQ(commands, (std::vector<std::string>{"first 'x.a' ", "second 'x.a'  end"}));
  programs.clear();
  EXPECT_EQ(as_open("run.sh", 0100100), 0);
  EXPECT_EQ(programs.calls(1)[0].back(), "./run.sh");
  programs.clear();
  EXPECT_EQ(as_open("run.sh", 0100655), 0);  // only others may execute it
  EXPECT_TRUE(programs.calls(0).empty());
}

TEST(Associations, NoNameIsExecuted) {
  ShownDir dir;
  StandIns programs;
  programs.add_running_terminal();
  programs.add("kored");
  programs.add("file", "echo \"$2: some type\"");
  for (const std::string& name : hostile_names()) {
    read_text("*\tkored\n");
    programs.clear();
    as_open(name.c_str(), 0100644);
    EXPECT_EQ(programs.calls_of("kored", 1)[0], (Call{"kored", as_received(name)}));
    std::string type;
    EXPECT_EQ(as_get_filetype(name.c_str(), 0100644, &type), 1);
    EXPECT_EQ(programs.calls_of("file", 1)[0],
              (Call{"file", "-L", name.starts_with('-') ? "./" + name : name}));
    EXPECT_TRUE(type == "some type\n" || name.find('\n') != std::string::npos) << name;
    as_replace({});
    write_file("./" + name, "#!/bin/sh\n: > ran\n", 0755);
    as_open(name.c_str(), 0100755);
    EXPECT_TRUE(comes_to_hold("ran", "")) << name;
    unlink("ran");
  }
  EXPECT_FALSE(path_exists("canary"));
}

TEST(Associations, FileTypeFallsBackOnTheMode) {
  const ShownDir dir;
  StandIns programs;
  programs.add("file", "exit 0");
  const std::pair<mode_t, std::string> rows[] = {{0x41ff, "Directory"},
                                                 {0xA1ff, "Symbolic Link"},
                                                 {0x81c0, "Executable"},
                                                 {0x8180, "Regular File"},
                                                 {0x9000, "as it was"}};
  for (const auto& [mode, expected] : rows) {
    std::string text = "as it was";
    EXPECT_EQ(as_get_filetype("x", mode, &text), expected != "as it was") << std::hex << mode;
    EXPECT_EQ(text, expected) << std::hex << mode;
  }
  std::string text;
  programs.add("file", "exec sleep 1000");  // longer than the test may take
  EXPECT_EQ(as_get_filetype("x", 0100644, &text), 1);
  EXPECT_EQ(text, "Regular File");
}

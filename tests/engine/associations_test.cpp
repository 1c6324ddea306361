#include "commands/associations.h"

#include <set>

#include "tests/support/stand_ins.h"

using AssociationsTest = ProgramsTest;
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
      {"*.a\to\tv\te\tfifth\tsixth", "*.a\to\tv\te\n"},
      {"# no\n*.a\to\n#no\n*.b\t\tv\n", "*.a\to\t\t\n*.b\t\tv\t\n"},
      {std::string("*.a\to\0lost\tv\n", 12), "*.a\to\t\t\n"},
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
  const auto commands = [](const char* name) {
    return each<int>({AS_OPEN, AS_VIEW, AS_EDIT}, [name](int selector) {
      const char* found = _get_pat_cmd(name, selector);
      return found ? found : "-";
    });
  };
  EXPECT_EQ(each<const char*>({"f.a", "p.jpg", "p.GIF", "f.A"}, commands),
            "o|v|-||o2|-|e2||o2|-|e2||-|-|-||");
}

TEST_F(AssociationsTest, OpenRunsEveryMatchOrTheFileItself) {
  programs.add("terminal");
  read_text("*.a\tfirst\n*.b\tother\n[$x]*\tsecond @ end\n");
  EXPECT_EQ(as_open("x.a", 0100755), 2);
  std::set<std::string> commands;
  for (const Call& call : programs.calls(2)) commands.insert(call.back());
  EXPECT_EQ(commands, (std::set<std::string>{"first 'x.a' ", "second 'x.a'  end"}));
  programs.clear();
  EXPECT_EQ(as_open("run.sh", 0100100), 0);
  EXPECT_EQ(programs.take().back(), "./run.sh");
  EXPECT_TRUE(as_open("run.sh", 0100655) == 0 && programs.calls(0).empty()) << "only others may execute it";
}

TEST_F(AssociationsTest, NoNameIsExecuted) {
  programs.add_running_terminal();
  programs.add("kored");
  programs.add("file", "echo \"$2: some type\"");
  for (const std::string& name : hostile_names()) {
    read_text("*\tkored\n");
    as_open(name.c_str(), 0100644);
    EXPECT_EQ(programs.take("kored"), (Call{"kored", as_received(name)}));
    std::string type;
    EXPECT_EQ(as_get_filetype(name.c_str(), 0100644, &type), 1);
    EXPECT_EQ(programs.take("file"), (Call{"file", "-L", name.starts_with('-') ? "./" + name : name}));
    EXPECT_TRUE(type == "some type\n" || name.find('\n') != std::string::npos) << name;
    as_replace({});
    write_file("./" + name, "#!/bin/sh\n: > ran\n", 0755);
    as_open(name.c_str(), 0100755);
    EXPECT_TRUE(comes_to_hold("ran", "")) << name;
    unlink("ran");
  }
  EXPECT_FALSE(path_exists("canary"));
}

TEST_F(AssociationsTest, FileTypeFallsBackOnTheMode) {
  programs.add("file", "exit 0");
  const auto type = [](mode_t mode) {
    std::string text = "as it was";
    return std::to_string(as_get_filetype("x", mode, &text)) + text;
  };
  EXPECT_EQ(each<mode_t>({0x41ff, 0xA1ff, 0x81c0, 0x8180, 0x9000}, type),
            "1Directory|1Symbolic Link|1Executable|1Regular File|0as it was|");
  programs.add("file", "exec sleep 1000");  // longer than the test may take
  EXPECT_EQ(type(0100644), "1Regular File");
}

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "core/command_text.h"
#include "platform/host.h"
#include "tests/support/shown_dir.h"
#include "tests/support/stand_ins.h"

namespace {
using Call = StandIns::Call;

// Runs a companion without a terminal and waits for it. Its exit status; output gets both its outputs.
int run(const std::string& name, const std::vector<std::string>& arguments, std::string* output = nullptr) {
  std::string command = command_word(host_companion(name));
  for (const std::string& argument : arguments) command += " " + command_word(argument);
  return run_shell(command + " 2>&1 </dev/null", output);
}

class Companions : public testing::Test {
 protected:
  void SetUp() override { programs_.hide_other_programs(); }
  // The one call that running a companion leads to.
  Call call_of(const std::string& name, const std::vector<std::string>& arguments) {
    programs_.clear();
    run(name, arguments);
    return programs_.calls(1)[0];
  }
  ShownDir dir_;
  StandIns programs_;
};
}  // namespace

TEST_F(Companions, EachTerminalGetsTheCommandItsOwnWay) {
  const std::vector<std::string> command{"sh", "-c", "echo 'a b'"};
  const struct {
    const char* terminal;
    Call call;
  } rows[] = {{"xterm", {"xterm", "-e", "sh", "-c", "echo 'a b'"}},
              {"mine", {"mine", "-e", "sh", "-c", "echo 'a b'"}},
              {"gnome-terminal", {"gnome-terminal", "--", "sh", "-c", "echo 'a b'"}},
              {"xfce4-terminal", {"xfce4-terminal", "-x", "sh", "-c", "echo 'a b'"}},
              {"foot", {"foot", "sh", "-c", "echo 'a b'"}},
              {"wezterm", {"wezterm", "start", "--", "sh", "-c", "echo 'a b'"}},
              {"qterminal", {"qterminal", "-e", "'sh' '-c' 'echo '\\''a b'\\'''"}},
              {"xterm -fa Mono", {"xterm", "-fa", "Mono", "-e", "sh", "-c", "echo 'a b'"}}};
  for (const auto& row : rows) {
    setenv("TERMINAL", row.terminal, 1);
    programs_.add(row.call[0]);
    Call arguments{"-e"};
    arguments.insert(arguments.end(), command.begin(), command.end());
    EXPECT_EQ(call_of("conwin", arguments), row.call) << row.terminal;
    EXPECT_EQ(call_of("conwin", {}),
              Call(row.call.begin(), row.call.begin() + (row.call[1] == "-fa" ? 3 : 1)));
  }
}

TEST_F(Companions, TheUsersTerminalComesFirstThenTheSystems) {
  setenv("TERMINAL", "conwin", 1);  // itself: no way to a window
  programs_.add("kitty");
  EXPECT_EQ(call_of("conwin", {"-e", "top"}), (Call{"kitty", "top"}));
  programs_.add("xterm");
  EXPECT_EQ(call_of("conwin", {"-e", "top"}), (Call{"xterm", "-e", "top"}));
  programs_.add("x-terminal-emulator");
  EXPECT_EQ(call_of("conwin", {"top", "-z"}), (Call{"x-terminal-emulator", "-e", "top", "-z"}));
  setenv("TERMINAL", "/no/such/terminal", 1);
  EXPECT_EQ(call_of("conwin", {})[0], "x-terminal-emulator");
}

TEST_F(Companions, KeepsTheWindowOpenWithTheCommandUntouched) {
  programs_.add_running_terminal();
  programs_.add("tool", "exit 3");
  std::string output;
  for (const std::string& name : hostile_names()) {
    programs_.clear();
    run("conwin", {"-z", "tool", name, "@"}, &output);
    EXPECT_EQ(programs_.calls_of("tool", 1)[0], (Call{"tool", name, "@"}));
    EXPECT_NE(output.find("ended with status 3"), std::string::npos) << output;
  }
  EXPECT_FALSE(path_exists("canary"));
  EXPECT_EQ(run("conwin", {"-x"}), 2);
}

TEST_F(Companions, AFailedCommandCanBeReadBeforeItsWindowGoes) {
  programs_.add_running_terminal();
  const struct {
    std::string then;
    bool stays;
  } rows[] = {{"exit 0", false},   {"exit 1", true},        {"exit 12", true},
              {"exit 99", true},   {"exit 127", true},      {"exit 128", false},
              {"exit 200", false}, {"kill -INT $$", false}, {"kill -TERM $$", false}};
  for (const auto& row : rows) {
    programs_.add("tool", row.then);
    std::string output;
    for (const char* option : {"-U", "-Ue"}) {
      run("conwin", {option, "tool"}, &output);
      EXPECT_EQ(output.find("ended with status") != std::string::npos, row.stays) << row.then << output;
    }
    run("conwin", {"-e", "tool"}, &output);
    EXPECT_EQ(output.find("ended with status"), std::string::npos) << row.then;
  }
  std::string output;
  run("conwin", {"-U", "/bin/sh", "-c", "no-such-printer 'a b'"}, &output);
  EXPECT_NE(output.find("not found"), std::string::npos);
  EXPECT_NE(output.find("Enter closes"), std::string::npos);
}

TEST_F(Companions, TheEditorIsTheUsersOwn) {
  programs_.add_running_terminal();
  for (const char* editor : {"ed it", "vim", "nano", "less", "gedit", "pager"}) programs_.add(editor);
  dir_.add("a.txt", false);
  dir_.add("-r", false);
  const struct {
    const char *visual, *editor, *pager;
    std::vector<std::string> arguments;
    Call call;
  } rows[] = {
      {"vim -n", "nano", "", {"a.txt", "b c"}, {"vim", "-n", "a.txt", "b c"}},
      {"", "nano", "", {"a.txt"}, {"nano", "a.txt"}},
      {"vim -n", "", "", {"-r", "a.txt"}, {"vim", "-n", "-R", "a.txt"}},
      {"", "nano", "pager", {"-r", "a.txt"}, {"nano", "-v", "a.txt"}},
      {"", "gedit", "pager", {"-r", "a.txt"}, {"pager", "a.txt"}},
      {"", "gedit", "", {"-r", "a.txt"}, {"less", "a.txt"}},
      {"", "", "", {"a.txt"}, {"gedit", "a.txt"}},
      {"kored", "no-such-editor", "", {"a.txt"}, {"gedit", "a.txt"}},
      {"vim", "", "", {"-r"}, {"vim", "./-r"}},  // alone it is the file
      {"vim", "", "", {"-rf", "+!touch canary"}, {"vim", "./-rf", "./+!touch canary"}},
      {"vim", "", "", {}, {"vim"}},
  };
  for (const auto& row : rows) {
    const std::pair<const char*, const char*> settings[] = {
        {"VISUAL", row.visual}, {"EDITOR", row.editor}, {"PAGER", row.pager}};
    for (const auto& [name, value] : settings) *value ? setenv(name, value, 1) : unsetenv(name);
    programs_.clear();
    run("kored", row.arguments);
    EXPECT_EQ(programs_.calls_of(row.call[0], 1)[0], row.call);
  }
  unsetenv("VISUAL");
  unsetenv("DISPLAY");
  programs_.clear();
  std::string output;
  EXPECT_EQ(run("kored", {"a.txt"}, &output), 1);  // no window for gedit, nor for a terminal with nano
  EXPECT_EQ(output, "conwin: there is no display to open a terminal window on.\n");
  EXPECT_TRUE(programs_.calls(0).empty());
}

TEST_F(Companions, AQuoteInANameFindsItsFile) {
  programs_.add_running_terminal();
  programs_.add("vim");
  setenv("VISUAL", "vim", 1);
  dir_.add("it's", false);
  dir_.add("both's", false);
  dir_.add("both\\047s", false);
  const std::pair<const char*, const char*> rows[] = {
      {"it\\047s", "it's"}, {"both\\047s", "both\\047s"}, {"none\\047s", "none\\047s"}};
  for (const auto& [given, meant] : rows) {
    programs_.clear();
    run("kored", {given});
    EXPECT_EQ(programs_.calls_of("vim", 1)[0], (Call{"vim", meant}));
  }
}

TEST_F(Companions, FilesGoToTheDesktopsHandlerElseToAProgram) {
  for (const char* name : {"imgshow", "mediaplay", "streamplay"}) {
    const std::string viewer = std::string(name) == "imgshow" ? "feh" : "mpv";
    programs_.add("xdg-open", "case \"$1\" in *bad*) exit 3;; esac");
    programs_.add(viewer);
    std::string output;
    programs_.clear();
    EXPECT_EQ(run(name, {"-a.png", "bad one", "worse; touch canary", "bad two"}, &output), 0);
    EXPECT_EQ(output, "");
    EXPECT_EQ(programs_.calls_of(viewer, 1)[0], (Call{viewer, dir_ / "bad one", dir_ / "bad two"}));
    const std::vector<Call> calls = programs_.calls_of("xdg-open", 4);
    EXPECT_EQ(calls[0], (Call{"xdg-open", dir_ / "-a.png"}));
    EXPECT_EQ(calls[2], (Call{"xdg-open", dir_ / "worse; touch canary"}));
    EXPECT_EQ(run(name, {}), 2);
  }
  EXPECT_FALSE(path_exists("canary"));
}

TEST_F(Companions, PagesGoToTheBrowser) {
  programs_.add("xdg-open");
  programs_.add("browser");
  std::filesystem::create_directory("two  words");
  const std::string here = dir_ / "two  words";
  write_file(here + "/a #1%.html", "");
  write_file(here + "/it's", "");
  ASSERT_EQ(chdir(here.c_str()), 0);
  const std::string encoded = "file://" + dir_ / "two%20%20words/";
  const struct {
    std::vector<std::string> arguments;
    std::string address;
  } rows[] = {{{"-u", "http://host/x?y#z"}, "http://host/x?y#z"},
              {{"-u", "file://" + here + "/a #1%.html"}, encoded + "a%20%231%25.html"},
              {{"a #1%.html"}, encoded + "a%20%231%25.html"},
              // as a shell splits "file://$PWD/'a #1%.html'"
              {{"-u", "file://" + (dir_ / "two"), "words/a #1%.html"}, encoded + "a%20%231%25.html"},
              {{"-u", "file://" + here + "/it\\047s"}, encoded + "it%27s"},
              {{"-u", encoded + "gone"}, encoded + "gone"}};
  for (const char* browser : {"", "browser", "roamer"}) {
    setenv("BROWSER", browser, 1);
    const std::string program = std::string(browser) == "browser" ? "browser" : "xdg-open";
    for (const auto& row : rows)
      EXPECT_EQ(call_of("roamer", row.arguments), (Call{program, row.address})) << row.arguments.back();
  }
}

TEST_F(Companions, CoreDumpsAreLookedIntoWithoutRunningAnything) {
  programs_.add("gdb");
  dir_.add("-x.core", false);
  std::string output;
  EXPECT_EQ(run("corescan", {"-x.core"}, &output), 0);
  const Call call = programs_.calls(1)[0];
  EXPECT_EQ(call.back(), "--core=./-x.core");
  EXPECT_NE(std::find(call.begin(), call.end(), "-nx"), call.end());
  EXPECT_NE(output.find("./-x.core"), std::string::npos);
}

TEST_F(Companions, SayWhatIsMissing) {
  const struct {
    const char* name;
    std::vector<std::string> arguments;
    const char* says;
  } rows[] = {{"conwin", {"-e", "top"}, "conwin: no terminal emulator found"},
              {"kored", {"a"}, "kored: no text editor found"},
              {"imgshow", {"a"}, "imgshow: no image viewer found"},
              {"mediaplay", {"a"}, "mediaplay: no media player found"},
              {"streamplay", {"a"}, "streamplay: no player for streaming media found"},
              {"roamer", {"-u", "http://x"}, "roamer: no web browser found"},
              {"corescan", {"a"}, "corescan: neither gdb nor eu-stack found"}};
  programs_.add("xmessage");
  for (const auto& row : rows) {
    std::string output;
    programs_.clear();
    EXPECT_NE(run(row.name, row.arguments, &output), 0);
    EXPECT_NE(output.find(row.says), std::string::npos) << output;
    EXPECT_EQ(programs_.calls_of("xmessage", 1)[0].back().find(row.says), 0u) << row.name;
    EXPECT_EQ(run(row.name, {"--help"}, &output), 0);
    EXPECT_EQ(output.find("Usage: " + std::string(row.name)), 0u);
  }
  // In a terminal it can be read there: no window comes to say it again.
  programs_.clear();
  std::string shown;
  run_shell("/usr/bin/script -qec '" + host_companion("imgshow") + " a' /dev/null </dev/null", &shown);
  EXPECT_NE(shown.find("imgshow: no image viewer found"), std::string::npos) << shown;
  run("kored", {"a"});
  EXPECT_EQ(programs_.calls_of("xmessage", 1)[0].back().find("kored"), 0u);
  unsetenv("DISPLAY");
  programs_.clear();
  for (const auto& row : rows) EXPECT_NE(run(row.name, row.arguments), 0) << row.name;
  programs_.add("xterm");
  std::string output;
  EXPECT_EQ(run("conwin", {}, &output), 1);
  EXPECT_EQ(output, "conwin: there is no display to open a terminal window on.\n");
}

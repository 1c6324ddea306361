#include <algorithm>

#include "core/command_text.h"
#include "platform/host.h"
#include "tests/support/shown_dir.h"
#include "tests/support/stand_ins.h"

namespace {
using Call = StandIns::Call;

struct Companions : testing::Test {
  ShownDir dir;
  StandIns programs;
  std::string output;  // both outputs of the last run
  void SetUp() override { programs.hide_other_programs(); }
  // Runs a companion without a terminal and waits for it. Its exit status; the calls before are forgotten.
  int run(const std::string& name, const std::vector<std::string>& arguments) {
    programs.clear();
    std::string command = command_word(host_companion(name));
    for (const std::string& argument : arguments) command += " " + command_word(argument);
    return run_shell(command + " 2>&1 </dev/null", &output);
  }
  // The first call that running a companion leads to.
  Call call_of(const std::string& name, const std::vector<std::string>& arguments) {
    run(name, arguments);
    return programs.calls(1)[0];
  }
};
}  // namespace

TEST_F(Companions, EachTerminalGetsTheCommandItsOwnWay) {
  const std::pair<const char*, Call> rows[] = {
      {"xterm", {"xterm", "-e", "sh", "-c", "echo 'a b'"}},
      {"mine", {"mine", "-e", "sh", "-c", "echo 'a b'"}},
      {"gnome-terminal", {"gnome-terminal", "--", "sh", "-c", "echo 'a b'"}},
      {"xfce4-terminal", {"xfce4-terminal", "-x", "sh", "-c", "echo 'a b'"}},
      {"foot", {"foot", "sh", "-c", "echo 'a b'"}},
      {"wezterm", {"wezterm", "start", "--", "sh", "-c", "echo 'a b'"}},
      {"qterminal", {"qterminal", "-e", "'sh' '-c' 'echo '\\''a b'\\'''"}},
      {"xterm -fa Mono", {"xterm", "-fa", "Mono", "-e", "sh", "-c", "echo 'a b'"}}};
  for (const auto& [terminal, call] : rows) {
    setenv("TERMINAL", terminal, 1);
    programs.add(call[0]);
    EXPECT_EQ(call_of("conwin", {"-e", "sh", "-c", "echo 'a b'"}), call) << terminal;
    EXPECT_EQ(call_of("conwin", {}), Call(call.begin(), call.begin() + (call[1] == "-fa" ? 3 : 1)));
  }
}

TEST_F(Companions, TheUsersTerminalComesFirstThenTheSystems) {
  setenv("TERMINAL", "conwin", 1);  // itself: no way to a window
  programs.add("kitty");
  EXPECT_EQ(call_of("conwin", {"-e", "top"}), (Call{"kitty", "top"}));
  programs.add("xterm");
  EXPECT_EQ(call_of("conwin", {"-e", "top"}), (Call{"xterm", "-e", "top"}));
  programs.add("x-terminal-emulator");
  setenv("TERMINAL", "/no/such/terminal", 1);
  EXPECT_EQ(call_of("conwin", {"top", "-z"}), (Call{"x-terminal-emulator", "-e", "top", "-z"}));
}

TEST_F(Companions, KeepsTheWindowOpenWithTheCommandUntouched) {
  programs.add_running_terminal();
  programs.add("tool", "exit 3");
  for (const std::string& name : hostile_names()) {
    run("conwin", {"-z", "tool", name, "@"});
    EXPECT_EQ(programs.calls_of("tool", 1)[0], (Call{"tool", name, "@"}));
    EXPECT_NE(output.find("ended with status 3"), std::string::npos) << output;
  }
  EXPECT_FALSE(path_exists("canary"));
  EXPECT_EQ(run("conwin", {"-x"}), 2);
}

TEST_F(Companions, AFailedCommandCanBeReadBeforeItsWindowGoes) {
  programs.add_running_terminal();
  const std::pair<const char*, bool> rows[] = {{"exit 0", false},   {"exit 1", true},
                                               {"exit 99", true},   {"exit 127", true},
                                               {"exit 128", false}, {"kill -INT $$", false}};
  for (const auto& [then, stays] : rows) {
    programs.add("tool", then);
    for (const std::string option : {"-U", "-Ue", "-e"}) {
      run("conwin", {option, "tool"});
      EXPECT_EQ(output.find("ended with status") != std::string::npos, stays && option != "-e") << then;
    }
  }
  run("conwin", {"-U", "/bin/sh", "-c", "no-such-printer 'a b'"});
  EXPECT_NE(output.find("not found"), std::string::npos);
  EXPECT_NE(output.find("Enter closes"), std::string::npos);
}

TEST_F(Companions, TheEditorIsTheUsersOwn) {
  programs.add_running_terminal();
  for (const char* editor : {"vim", "nano", "less", "gedit", "pager"}) programs.add(editor);
  for (const char* name : {"a.txt", "-r", "it's", "both's", "both\\047s"}) dir.add(name, false);
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
      {"kored", "no-such-editor", "", {"a.txt"}, {"gedit", "a.txt"}},
      {"vim", "", "", {"-r"}, {"vim", "./-r"}},  // alone it is the file
      {"vim", "", "", {"-rf", "+!touch canary"}, {"vim", "./-rf", "./+!touch canary"}},
      {"vim", "", "", {}, {"vim"}},
      // A quote in a name comes in another spelling.
      {"vim", "", "", {"it\\047s"}, {"vim", "it's"}},
      {"vim", "", "", {"both\\047s"}, {"vim", "both\\047s"}},
      {"vim", "", "", {"none\\047s"}, {"vim", "none\\047s"}},
  };
  for (const auto& row : rows) {
    const std::pair<const char*, const char*> settings[] = {
        {"VISUAL", row.visual}, {"EDITOR", row.editor}, {"PAGER", row.pager}};
    for (const auto& [name, value] : settings) *value ? setenv(name, value, 1) : unsetenv(name);
    run("kored", row.arguments);
    EXPECT_EQ(programs.calls_of(row.call[0], 1)[0], row.call);
  }
  unsetenv("VISUAL");
  unsetenv("DISPLAY");
  EXPECT_EQ(run("kored", {"a.txt"}), 1);  // no window for gedit, nor for a terminal with nano
  EXPECT_EQ(output, "conwin: there is no display to open a terminal window on.\n");
  EXPECT_TRUE(programs.calls(0).empty());
}

TEST_F(Companions, FilesGoToTheDesktopsHandlerElseToAProgram) {
  programs.add("xdg-open", "case \"$1\" in *bad*) exit 3;; esac");
  for (const char* name : {"imgshow", "mediaplay", "streamplay"}) {
    const std::string viewer = std::string(name) == "imgshow" ? "feh" : "mpv";
    programs.add(viewer);
    EXPECT_EQ(run(name, {"-a.png", "bad one", "worse; touch canary", "bad two"}), 0);
    EXPECT_EQ(output, "");
    EXPECT_EQ(programs.calls_of(viewer, 1)[0], (Call{viewer, dir / "bad one", dir / "bad two"}));
    const std::vector<Call> calls = programs.calls_of("xdg-open", 4);
    EXPECT_EQ(calls[0], (Call{"xdg-open", dir / "-a.png"}));
    EXPECT_EQ(calls[2], (Call{"xdg-open", dir / "worse; touch canary"}));
    EXPECT_EQ(run(name, {}), 2);
  }
  EXPECT_FALSE(path_exists("canary"));
}

TEST_F(Companions, PagesGoToTheBrowser) {
  programs.add("xdg-open");
  programs.add("browser");
  dir.add("two  words/", false);
  const std::string here = dir / "two  words", encoded = "file://" + dir / "two%20%20words/";
  write_file(here + "/a #1%.html", "");
  write_file(here + "/it's", "");
  ASSERT_EQ(chdir(here.c_str()), 0);
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"-u", "http://host/x?y#z"}, "http://host/x?y#z"},
      {{"-u", "file://" + here + "/a #1%.html"}, encoded + "a%20%231%25.html"},
      {{"a #1%.html"}, encoded + "a%20%231%25.html"},
      // as a shell splits "file://$PWD/'a #1%.html'"
      {{"-u", "file://" + (dir / "two"), "words/a #1%.html"}, encoded + "a%20%231%25.html"},
      {{"-u", "file://" + here + "/it\\047s"}, encoded + "it%27s"},
      {{"-u", encoded + "gone"}, encoded + "gone"}};
  for (const std::string browser : {"", "browser", "roamer"}) {
    setenv("BROWSER", browser.c_str(), 1);
    for (const auto& [arguments, address] : rows)
      EXPECT_EQ(call_of("roamer", arguments), (Call{browser == "browser" ? "browser" : "xdg-open", address}));
  }
}

TEST_F(Companions, CoreDumpsAreLookedIntoWithoutRunningAnything) {
  programs.add("gdb");
  dir.add("-x.core", false);
  const Call call = call_of("corescan", {"-x.core"});
  EXPECT_EQ(call.back(), "--core=./-x.core");
  EXPECT_NE(std::find(call.begin(), call.end(), "-nx"), call.end());
}

TEST_F(Companions, SayWhatIsMissing) {
  const struct {
    std::string name;
    std::vector<std::string> arguments;
    std::string says;
  } rows[] = {{"conwin", {"-e", "top"}, "conwin: no terminal emulator found"},
              {"kored", {"a"}, "kored: no text editor found"},
              {"imgshow", {"a"}, "imgshow: no image viewer found"},
              {"mediaplay", {"a"}, "mediaplay: no media player found"},
              {"streamplay", {"a"}, "streamplay: no player for streaming media found"},
              {"roamer", {"-u", "http://x"}, "roamer: no web browser found"},
              {"corescan", {"a"}, "corescan: neither gdb nor eu-stack found"}};
  programs.add("xmessage");
  for (const auto& row : rows) {
    EXPECT_NE(run(row.name, row.arguments), 0);
    EXPECT_NE(output.find(row.says), std::string::npos) << output;
    EXPECT_EQ(programs.calls_of("xmessage", 1)[0].back().find(row.says), 0u) << row.name;
    EXPECT_EQ(run(row.name, {"--help"}), 0);
    EXPECT_EQ(output.find("Usage: " + row.name), 0u);
  }
  // In a terminal it can be read there: no window comes to say it again.
  programs.clear();
  run_shell("/usr/bin/script -qec '" + host_companion("imgshow") + " a' /dev/null </dev/null", &output);
  EXPECT_NE(output.find("imgshow: no image viewer found"), std::string::npos) << output;
  EXPECT_TRUE(programs.calls(0).empty());
  unsetenv("DISPLAY");
  for (const auto& row : rows) EXPECT_NE(run(row.name, row.arguments), 0) << row.name;
}

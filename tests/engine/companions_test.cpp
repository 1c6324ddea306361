#include "core/command_text.h"
#include "platform/host.h"
#include "tests/support/stand_ins.h"

struct Companions : ProgramsTest {
  std::string output;  // both outputs of the last run
  void SetUp() override { programs.hide_other_programs(); }
  // Runs a companion without a terminal and waits for it. Its exit status; the calls before are forgotten.
  int run(const std::string& name, const std::vector<std::string>& arguments) {
    programs.clear();
    std::string command = command_word(host_companion(name));
    for (const std::string& argument : arguments) command += " " + command_word(argument);
    return run_shell(command + " 2>&1 </dev/null", &output);
  }
};

TEST_F(Companions, KeepsTheWindowOpenWithTheCommandUntouched) {
  programs.add_running_terminal();
  programs.add("tool", "exit 3");
  for (const std::string& name : hostile_names()) {
    run("conwin", {"-z", "tool", name, "@"});
    EXPECT_EQ(programs.take("tool"), (Call{"tool", name, "@"}));
    EXPECT_NE(output.find("ended with status 3"), std::string::npos) << output;
  }
  EXPECT_FALSE(path_exists("canary"));
}

TEST_F(Companions, AFailedCommandCanBeReadBeforeItsWindowGoes) {
  programs.add_running_terminal();
  const std::pair<const char*, bool> rows[] = {
      {"exit 0", false}, {"exit 127", true}, {"exit 128", false}, {"kill -INT $$", false}};
  for (const auto& [then, stays] : rows) {
    programs.add("tool", then);
    for (const std::string option : {"-U", "-Ue", "-e"}) {
      run("conwin", {option, "tool"});
      EXPECT_EQ(output.find("ended with status") != std::string::npos, stays && option != "-e") << then;
    }
  }
}

TEST_F(Companions, TheEditorIsTheUsersOwn) {
  programs.add_running_terminal();
  for (const char* editor : {"vim", "nano", "less", "gedit"}) programs.add(editor);
  for (const char* name : {"a.txt", "it's", "both's", "both\\047s"}) dir.add(name);
  const std::tuple<const char*, const char*, std::vector<std::string>, Call> rows[] = {
      {"vim -n", "nano", {"a.txt", "b c"}, {"vim", "-n", "a.txt", "b c"}},
      {"vim -n", "", {"-r", "a.txt"}, {"vim", "-n", "-R", "a.txt"}},
      {"", "nano", {"-r", "a.txt"}, {"nano", "-v", "a.txt"}},
      {"", "gedit", {"-r", "a.txt"}, {"less", "a.txt"}},
      {"kored", "no-such-editor", {"a.txt"}, {"gedit", "a.txt"}},
      {"vim", "", {"-rf", "+!touch canary"}, {"vim", "./-rf", "./+!touch canary"}},
      {"vim", "", {"it\\047s"}, {"vim", "it's"}},
      {"vim", "", {"both\\047s"}, {"vim", "both\\047s"}}};
  for (const auto& [visual, editor, arguments, call] : rows) {
    setenv("VISUAL", visual, 1);
    setenv("EDITOR", editor, 1);
    run("kored", arguments);
    EXPECT_EQ(programs.take(call[0]), call);
  }
  unsetenv("VISUAL");
  unsetenv("DISPLAY");
  // No window for gedit, nor for a terminal with nano.
  EXPECT_TRUE(run("kored", {"a.txt"}) == 1 && programs.calls(0).empty());
  EXPECT_EQ(output, "conwin: there is no display to open a terminal window on.\n");
}

TEST_F(Companions, PagesGoToTheBrowser) {
  programs.add("xdg-open");
  programs.add("browser");
  dir.add("two  words/");
  const std::string here = dir / "two  words", encoded = "file://" + dir / "two%20%20words/";
  write_file(here + "/a #1%.html", "");
  write_file(here + "/it's", "");
  ASSERT_EQ(chdir(here.c_str()), 0);
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"a #1%.html"}, encoded + "a%20%231%25.html"},
      // as a shell splits "file://$PWD/'a #1%.html'"
      {{"-u", "file://" + (dir / "two"), "words/a #1%.html"}, encoded + "a%20%231%25.html"},
      {{"-u", "file://" + here + "/it\\047s"}, encoded + "it%27s"},
      {{"-u", encoded + "gone"}, encoded + "gone"}};
  for (const std::string browser : {"", "browser", "roamer"}) {
    setenv("BROWSER", browser.c_str(), 1);
    for (const auto& [arguments, address] : rows) {
      run("roamer", arguments);
      EXPECT_EQ(programs.take(), (Call{browser == "browser" ? "browser" : "xdg-open", address}));
    }
  }
}

TEST_F(Companions, SayWhatIsMissing) {
  const std::pair<const char*, const char*> rows[] = {
      {"conwin", "conwin: no terminal emulator found"},
      {"kored", "kored: no text editor found"},
      {"imgshow", "imgshow: no image viewer found"},
      {"roamer", "roamer: no web browser found"},
      {"corescan", "corescan: neither gdb nor eu-stack found"}};
  programs.add("xmessage");
  for (const auto& [name, says] : rows) {
    EXPECT_NE(run(name, {"-e", "x"}), 0);
    EXPECT_NE(output.find(says), std::string::npos) << output;
    EXPECT_EQ(programs.calls_of("xmessage", 1)[0].back().find(says), 0u);
  }
}

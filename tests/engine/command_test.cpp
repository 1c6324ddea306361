#include "core/command.h"

#include "core/command_text.h"
#include "tests/support/stand_ins.h"

using CommandRun = ProgramsTest;
using Call = StandIns::Call;

static Call in_terminal(const std::string& command) {
  return {"terminal", "-e", "/bin/sh", "-c", command};
}

// The call without the shell around it that keeps the window after a failure.
static Call in_window(Call call) {
  if (call.size() == 9 && call[2] == "/bin/sh" && call[5] == "sh")
    call.erase(call.begin() + 2, call.begin() + 6);
  return call;
}

TEST(Command, ExpandsTemplates) {
  const std::tuple<const char*, std::vector<std::string>, const char*> rows[] = {
      {"kored @", {"a", "b"}, "kored 'a' 'b' "}, {"lpr", {"x"}, "lpr 'x' "},
      {"cp '@' /tmp", {"x"}, "cp 'x'  /tmp"},    {"cp '@\" /tmp'", {"x"}, "cp ''x' \" /tmp'"},
      {"view @", {"it's"}, "view 'it\\047s' "},  {"mail\\@host @", {"x"}, "mail@host 'x' "},
      {"a\\b\\\\@ @", {"x"}, "a\\b\\@ 'x' "},    {"diff @ @", {"a", "b"}, "diff 'a' 'b'  'a' 'b' "}};
  std::string expanded;
  for (const auto& [text, names, command] : rows)
    EXPECT_TRUE(command_expand(text, names, &expanded) && expanded == command) << text << ": " << expanded;
}

// Nor does a shell inside the command.
TEST(Command, NoTemplateLetsANameExecute) {
  const TempDir dir;
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  const auto runs = [](const char* text, const std::string& name, const char* again) {
    std::string command;
    if (!command_expand(text, {name}, &command)) return false;
    unlink("received");
    write_file("got", "#!/bin/sh\nprintf '%s' \"$1\" > received\n", 0755);
    write_file("line", command + "\n");
    run_shell(std::string("exec 2>/dev/null; PATH=.:$PATH; sh line") + again);
    EXPECT_FALSE(path_exists("canary")) << command;
    unlink("canary");
    return true;
  };
  for (const std::string& name : hostile_names()) {
    // Every name reaches the program, as one argument.
    for (const char* text :
         {"got @", "got", "got '@'", "got \"@\" x", "(got @)", "x=$(got @)", "'go't @", "got @ 2>&1",
          "echo \"$(got @)\"", "sh -c \"got @\"", "sh -c 'got @'", "sh -c 'got '@''", "exec 2>&1; got @"})
      EXPECT_TRUE(runs(text, name, "") && read_file("received") == as_received(name)) << text << name;
    for (const char* text : {"got 'see'@'x'", "got \\'@'", "sh -c 'got \"a @\"'", "sh -c \"got 'a @'\"",
                             "got \\", "got `got @`", "got $'@'", "got ${x:-@}", "got x # @", "got x >& @",
                             "got x >&2@", "got x \\\n# @", "got $\\\n(( @ ))", "cat <<@", "got '", "got \"",
                             "sh -c \"got \\\"@\\\"\"", "sh -c \"sh -c 'got @'\""})
      runs(text, name, "; command -v bash && bash line");
    EXPECT_EQ(dir.shell("printf '%s' " + command_word(name)), name);
  }
  EXPECT_EQ(command_word(""), "''");
}

TEST_F(CommandRun, InATerminalThatStaysOrDirectly) {
  programs.add("conwin");
  programs.add("terminal", "echo \"$VRIG\" > vrig; pwd >> vrig");
  const std::pair<const char*, Call> rows[] = {
      {" \t\nmake all", in_terminal("make all")},
      {" conwin\t-z make -f 'Makefile' ", {"conwin", "-z", "make", "-f", "Makefile"}},
      {"conwins -e top", in_terminal("conwins -e top")}};
  for (const auto& [command, call] : rows) {
    EXPECT_EQ(misc_run(0, 0, command), 0);
    EXPECT_EQ(in_window(programs.take()), call) << command;
  }
  EXPECT_EQ(misc_run(3, 1, "make"), 0);
  const Call call = programs.take();
  EXPECT_EQ(in_window(call), (Call{"terminal", "-e", "/bin/sh", "-c", "make"}));
  EXPECT_TRUE(call[4].ends_with("; read -r answer")) << "it lets the window go without waiting: " << call[4];
  EXPECT_TRUE(comes_to_hold(dir / "vrig", "3\n" + gDir.path + "\n"));
  EXPECT_TRUE(misc_run(0, 0, " \n") == -1 && misc_spawn(0, "no such tool", {}) == -1);
}

// The kernel takes no argument of 128 KiB.
TEST_F(CommandRun, OnMoreNamesThanAnArgumentHolds) {
  const TempDir runtime;
  programs.add_running_terminal();
  programs.add("got");
  Call names;
  for (int i = 0; i < 1500; ++i)
    names.push_back(std::to_string(10000 + i) + " $(x);\n" + std::string(150, 'n'));
  for (const std::string& name : names) dir.add(name);
  dir.select(names);
  dir.make_current(names[0]);
  names.insert(names.begin(), "got");
  setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
  for (const char* text : {"got @", "conwin -e got @"}) {
    EXPECT_EQ(file_cmd(text, nullptr), 0);
    EXPECT_EQ(programs.take("got"), names) << text;
    EXPECT_EQ(runtime.listing(), "") << text;
  }
}

TEST_F(CommandRun, TakesTheSelectionOrRefuses) {
  programs.add("terminal");
  for (const char* name : {"b", "a", "sub/"}) dir.add(name);
  const std::tuple<const char*, std::vector<std::string>, const char*, const char*> rows[] = {
      {nullptr, {}, "a", nullptr},
      {nullptr, {"a", "sub"}, "a", nullptr},
      {"a", {"a"}, "sub", nullptr},
      {nullptr, {"a", "b"}, "a", "kored 'b' 'a' "},
      {"other", {"a", "b"}, "a", "kored 'other' "},
      {"a", {"a", "b"}, "sub", "kored 'a' "}};
  for (const auto& [name, selected, current, command] : rows) {
    dir.select(selected);
    dir.make_current(current);
    EXPECT_EQ(file_cmd("kored @", name), command ? 0 : -1);
    EXPECT_EQ(command ? in_window(programs.take()) : Call(), command ? in_terminal(command) : Call());
    EXPECT_TRUE(programs.calls(0).empty());
  }
}

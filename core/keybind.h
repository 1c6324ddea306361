// The registry of actions and key bindings: which key, in which linked widget, calls what. Nothing is bound
// by default; the hooks at start-up are there to fill it. Interface thread.
#pragma once

#include <cstdint>
#include <forward_list>
#include <string>
#include <vector>

// A callback gets the widget that the key was pressed in, the data of kb_process, and the event.
struct KeyEvent {
  bool down = true;        // pressed, not released
  bool repeat = false;     // made by holding the key
  bool has_cap = true;     // carries a key cap
  uint32_t modifiers = 0;  // state of the modifier keys
  uint32_t cap = 0;
};
using ac_callback = int (*)(void* widget, void* data, const KeyEvent* event);

struct Action {
  std::string name;
  std::vector<ac_callback> callbacks;
};

enum : uint32_t { BIND_PRIMARY = 1 };  // the one of the action's bindings in the section whose text is shown

struct KeyGroup;
struct Binding {
  uint32_t cap;
  uint32_t flags;
  Action* action;
  KeyGroup* group;
};
struct KeyGroup {
  uint32_t modifiers;
  std::forward_list<Binding> bindings;
};
struct Section {
  std::string name;
  std::forward_list<KeyGroup> groups;
};
struct Link {
  Section* section;
  const void* widget;
};

// All newest first; owned by the registry, never freed.
extern std::forward_list<Action> gActions;
extern std::forward_list<Section> gSections;
extern std::forward_list<Link> gLinks;

// By exact name; null when there is none.
Action* x_get_action(const char* name);
Section* x_get_section(const char* name);
Action* x_add_action(const char* name);
Section* x_add_section(const char* name);

// Finds or makes the action and adds the callback unless it is there. 0.
int ac_register(const char* action, ac_callback callback);
// Links the widget to the section (made if need be), in place of the one it was linked to. 0.
int ac_link_widget(const void* widget, const char* section);
void ac_unlink_widget(const void* widget);

// Binds the key to the action, both made if need be. The action's first binding in a section is primary. 0.
int kb_attach(const char* action, const char* section, uint32_t modifiers, uint32_t cap);
// Makes that binding the action's primary one in the section. -1 when there is no such binding of the action.
int kb_set_default(const char* action, const char* section, uint32_t modifiers, uint32_t cap);
// text when the action has a primary binding in the section, else null.
const char* kb_get_accel_text(const char* action, const char* section, const char* text);

// Calls every callback of the action that the widget's section binds to the key. 1 when there was one, else
// 0.
int kb_process(void* widget, void* data, const KeyEvent* event);

// What start-up calls to fill the registry; null, as by default, registers nothing.
struct KeybindHooks {
  void (*actions)() = nullptr;
  void (*defaults)() = nullptr;
};
extern KeybindHooks gKeybindHooks;
void init_actions();
void init_kb_defaults();
// Links the file list's widget to the section "filelist".
void init_link(const void* filelist);

// The text file of all bindings. A null dir: name is the whole path. 0, or -1 when it cannot be opened.
int kb_save(const char* dir, const char* name);
int kb_load(const char* dir, const char* name);

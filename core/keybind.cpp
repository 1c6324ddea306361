#include "core/keybind.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "core/save_file.h"

std::forward_list<Action> gActions;
std::forward_list<Section> gSections;
std::forward_list<Link> gLinks;
KeybindHooks gKeybindHooks;

namespace {
constexpr size_t kLineBuffer = 32;  // longer lines come in pieces, which do not parse
constexpr size_t kLargestFile = 1 << 20;

template <class Node>
Node* kb_find_named(std::forward_list<Node>* list, const char* name) {
  for (Node& node : *list)
    if (node.name == name) return &node;
  return nullptr;
}

Action* kb_need_action(const char* name) {
  Action* action = x_get_action(name);
  return action ? action : x_add_action(name);
}

Section* kb_need_section(const char* name) {
  Section* section = x_get_section(name);
  return section ? section : x_add_section(name);
}

KeyGroup* kb_find_group(Section* section, uint32_t modifiers) {
  for (KeyGroup& group : section->groups)
    if (group.modifiers == modifiers) return &group;
  return nullptr;
}

Binding* kb_find_binding(Section* section, uint32_t modifiers, uint32_t cap) {
  KeyGroup* group = kb_find_group(section, modifiers);
  if (!group) return nullptr;
  for (Binding& binding : group->bindings)
    if (binding.cap == cap) return &binding;
  return nullptr;
}

// Calls fn for every binding of the action in the section.
template <class Fn>
void kb_each_binding(Section* section, const Action* action, Fn fn) {
  for (KeyGroup& group : section->groups)
    for (Binding& binding : group.bindings)
      if (binding.action == action) fn(&binding);
}

Binding* kb_primary(Section* section, const Action* action) {
  Binding* primary = nullptr;
  kb_each_binding(section, action, [&primary](Binding* binding) {
    if (binding->flags & BIND_PRIMARY) primary = binding;
  });
  return primary;
}

void kb_append_binding(std::string* text, const Binding& binding) {
  text->append("'").append(binding.action->name).append("' ");
  text->append(std::to_string(binding.group->modifiers)).append(" ");
  text->append(std::to_string(binding.cap)).append("\n");
}

// Takes the next word off *rest: separators before it are passed over, the one behind it goes with it. False
// when there is none.
bool kb_next_word(std::string_view* rest, std::string_view separators, std::string* word) {
  const size_t start = rest->find_first_not_of(separators);
  if (start == std::string_view::npos) return false;
  const size_t end = std::min(rest->find_first_of(separators, start), rest->size());
  word->assign(rest->substr(start, end - start));
  rest->remove_prefix(std::min(end + 1, rest->size()));
  return true;
}

bool kb_next_number(std::string_view* rest, uint32_t* number) {
  std::string word;
  if (!kb_next_word(rest, " \n", &word)) return false;
  char* end = nullptr;
  const unsigned long value = std::strtoul(word.c_str(), &end, 10);
  if (end == word.c_str() || value > UINT32_MAX) return false;
  *number = static_cast<uint32_t>(value);
  return true;
}

void kb_load_line(std::string_view line, std::string* section) {
  line = line.substr(0, line.find('\0'));
  if (line.starts_with('[')) {
    if (!kb_next_word(&line, "[]'\n", section)) section->clear();
    return;
  }
  std::string action;
  uint32_t modifiers = 0, cap = 0;
  if (!line.starts_with('\'') || section->empty() || !kb_next_word(&line, "'", &action)) return;
  if (kb_next_number(&line, &modifiers) && kb_next_number(&line, &cap))
    kb_attach(action.c_str(), section->c_str(), modifiers, cap);
}

// With a null dir the name is the whole path.
const char* kb_directory(const char* dir, const char* name) {
  if (dir) return dir;
  return *name == '/' ? "/" : ".";
}
}  // namespace

Action* x_get_action(const char* name) {
  return kb_find_named(&gActions, name);
}

Section* x_get_section(const char* name) {
  return kb_find_named(&gSections, name);
}

Action* x_add_action(const char* name) {
  return &gActions.emplace_front(Action{name, {}});
}

Section* x_add_section(const char* name) {
  return &gSections.emplace_front(Section{name, {}});
}

int ac_register(const char* action, ac_callback callback) {
  std::vector<ac_callback>& callbacks = kb_need_action(action)->callbacks;
  if (std::find(callbacks.begin(), callbacks.end(), callback) == callbacks.end())
    callbacks.push_back(callback);
  return 0;
}

int ac_link_widget(const void* widget, const char* section) {
  Section* target = kb_need_section(section);
  for (Link& link : gLinks) {
    if (link.widget != widget) continue;
    link.section = target;
    return 0;
  }
  gLinks.push_front({target, widget});
  return 0;
}

void ac_unlink_widget(const void* widget) {
  gLinks.remove_if([widget](const Link& link) { return link.widget == widget; });
}

int kb_attach(const char* action_name, const char* section_name, uint32_t modifiers, uint32_t cap) {
  Action* action = kb_need_action(action_name);
  Section* section = kb_need_section(section_name);
  KeyGroup* group = kb_find_group(section, modifiers);
  if (!group) group = &section->groups.emplace_front(KeyGroup{modifiers, {}});
  Binding* binding = kb_find_binding(section, modifiers, cap);
  if (!binding) binding = &group->bindings.emplace_front(Binding{cap, 0, action, group});
  if (binding->action != action) {
    binding->action = action;
    binding->flags &= ~BIND_PRIMARY;  // it was the other action's mark
  }
  if (!kb_primary(section, action)) binding->flags |= BIND_PRIMARY;
  return 0;
}

int kb_set_default(const char* action_name, const char* section_name, uint32_t modifiers, uint32_t cap) {
  Action* action = x_get_action(action_name);
  Section* section = x_get_section(section_name);
  if (!action || !section) return -1;
  Binding* binding = kb_find_binding(section, modifiers, cap);
  if (!binding || binding->action != action) return -1;
  if (Binding* primary = kb_primary(section, action)) primary->flags &= ~BIND_PRIMARY;
  binding->flags |= BIND_PRIMARY;
  return 0;
}

const char* kb_get_accel_text(const char* action_name, const char* section_name, const char* text) {
  const Action* action = x_get_action(action_name);
  Section* section = x_get_section(section_name);
  return action && section && kb_primary(section, action) ? text : nullptr;
}

int kb_process(void* widget, void* data, const KeyEvent* event) {
  if (!event->down || event->repeat || !event->has_cap) return 0;
  for (const Link& link : gLinks) {
    if (link.widget != widget) continue;
    const Binding* binding = kb_find_binding(link.section, event->modifiers, event->cap);
    if (!binding) continue;
    const std::vector<ac_callback> callbacks = binding->action->callbacks;  // a callback may change them
    for (ac_callback callback : callbacks) callback(widget, data, event);
    return 1;
  }
  return 0;
}

void init_actions() {
  if (gKeybindHooks.actions) gKeybindHooks.actions();
}

void init_kb_defaults() {
  if (gKeybindHooks.defaults) gKeybindHooks.defaults();
}

void init_link(const void* filelist) {
  ac_link_widget(filelist, "filelist");
}

int kb_save(const char* dir, const char* name) {
  std::string text;
  for (Section& section : gSections) {
    text.append("[").append(section.name).append("]\n");
    for (const Action& action : gActions) {
      Binding* primary = kb_primary(&section, &action);
      if (primary) kb_append_binding(&text, *primary);
      kb_each_binding(&section, &action, [&text, primary](const Binding* binding) {
        if (binding != primary) kb_append_binding(&text, *binding);
      });
    }
    text.append("\n");
  }
  return save_file(kb_directory(dir, name), name, text);
}

int kb_load(const char* dir, const char* name) {
  std::string text, section;
  if (!load_file(kb_directory(dir, name), name, kLargestFile, &text)) return -1;
  for (std::string_view rest = text; !rest.empty();) {
    const size_t length = std::min({rest.find('\n') + 1, kLineBuffer - 1, rest.size()});
    const size_t taken = length == 0 ? std::min(kLineBuffer - 1, rest.size()) : length;
    kb_load_line(rest.substr(0, taken), &section);
    rest.remove_prefix(taken);
  }
  return 0;
}

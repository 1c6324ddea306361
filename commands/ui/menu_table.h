// The one table of everything in the menu bar.
#pragma once

#include <array>
#include <string_view>

enum class MenuKind { item, toggle, choice, submenu, separator };

struct MenuEntry {
  const char* parent;  // object name of the menu it stands in: a menu of the bar, or a submenu's identifier
  const char* id;      // object name of the item; empty for a separator
  const char* label;   // '&' before the mnemonic
  const char* keys;    // portable text of the shortcut; empty: none
  MenuKind kind;
  void (*run)();  // null: a submenu, a separator or an inert item
};

struct MenuTitle {
  const char* id;
  const char* label;
};

inline constexpr int kMenuEntries = 59;
inline constexpr int kMenuTitles = 6;
extern const std::array<MenuTitle, kMenuTitles> kMenuBar;
extern const std::array<MenuEntry, kMenuEntries> kMenuTable;

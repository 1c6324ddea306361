// An item is disabled only while its menu is open: the set-ups run when a menu opens, and everything is
// enabled again when it closes. A key therefore always reaches its item, and the set-up runs then, for the
// selection and the clipboard of that moment.
#include "commands/ui/menus.h"

#include <QActionGroup>
#include <QApplication>
#include <QHash>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTextEdit>
#include <cstring>

#include "commands/ui/file_menu.h"
#include "commands/ui/menu_table.h"
#include "commands/ui/view_menu.h"
#include "fileops/ui/edit_menu.h"
#include "views/ui/file_list.h"
#include "views/ui/hotlist_menu.h"

namespace {
struct MenuSetup {
  const char* menu;
  void (*state)(QMenu*);   // enables and marks items
  void (*filled)(QMenu*);  // adds what the menu holds only while it is open; may be null
  bool on_selection = false;
};
const MenuSetup kSetups[] = {
    {"file_menu", [](QMenu* menu) { fm_setup(menu); }, nullptr, true},
    {"edit_menu", em_setup, em_populate, true},
    {"view_menu", vm_setup, nullptr},
    {"go_menu", gm_setup, nullptr},
    {"hotlist_menu", hm_setup, hm_populate},
};

// Keys that the tree, a field or a button has its own use for: they belong to the file list.
const char* const kListKeys[] = {"Enter", "Ctrl+Enter", "Shift+Enter", "Del"};

// Enter opens whatever is current, also what the menu has no command for: an executable, or nothing selected.
const char kOpensAnything[] = "fm_open";

QHash<QString, QPointer<QAction>> sItems;

const MenuSetup* setup_of(const QMenu* menu) {
  for (const MenuSetup& setup : kSetups)
    if (menu->objectName() == QLatin1String(setup.menu)) return &setup;
  return nullptr;
}

void enable_all(QMenu* menu) {
  for (QAction* action : menu->actions()) {
    action->setEnabled(true);
    if (action->menu()) enable_all(action->menu());
  }
}

void open_setup(const MenuSetup& setup, QMenu* menu) {
  if (setup.on_selection) fl_select_pointed();
  setup.state(menu);
}

bool run_entry(const MenuEntry& entry, QMenu* top) {
  QAction* action = sItems.value(QString::fromLatin1(entry.id));
  const MenuSetup* setup = setup_of(top);
  if (setup) open_setup(*setup, top);
  const bool allowed = action && (action->isEnabled() || std::strcmp(entry.id, kOpensAnything) == 0);
  enable_all(top);
  if (allowed && entry.run) entry.run();
  if (setup && entry.kind != MenuKind::item)
    setup->state(top);  // the mark shows what is, not what was clicked
  return allowed;
}

QKeySequence keys_of(const char* text) {
  return QKeySequence(QString::fromLatin1(text), QKeySequence::PortableText);
}

// Both keys named Enter do the same.
QList<QKeySequence> all_keys_of(const char* text) {
  QList<QKeySequence> keys{keys_of(text)};
  const std::string_view name(text);
  if (name.ends_with("Enter")) {
    const std::string other = std::string(name.substr(0, name.size() - 5)) + "Return";
    keys.push_back(keys_of(other.c_str()));
  }
  return keys;
}

bool belongs_to_list(const char* keys) {
  for (const char* key : kListKeys)
    if (std::strcmp(key, keys) == 0) return true;
  return false;
}

void set_keys(QAction* action, const MenuEntry& entry, QMainWindow* window) {
  if (*entry.keys == '\0') return;
  action->setShortcuts(all_keys_of(entry.keys));
  if (!belongs_to_list(entry.keys)) return;
  QWidget* list = window->findChild<QWidget*>(QStringLiteral("filelist"));
  if (!list) return;
  action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  list->addAction(action);
}

QAction* add_item(QMenu* menu, const MenuEntry& entry, QMenu* top, QMainWindow* window) {
  auto* action = new QAction(QString::fromUtf8(entry.label), menu);
  action->setMenuRole(QAction::NoRole);
  menu->addAction(action);
  if (entry.kind == MenuKind::toggle || entry.kind == MenuKind::choice) action->setCheckable(true);
  if (entry.kind == MenuKind::choice) {
    auto* group = menu->findChild<QActionGroup*>();
    (group ? group : new QActionGroup(menu))->addAction(action);
  }
  set_keys(action, entry, window);
  QObject::connect(action, &QAction::triggered, menu, [&entry, top] { run_entry(entry, top); });
  return action;
}

QMenu* add_submenu(QMenu* menu, const MenuEntry& entry) {
  QMenu* submenu = menu->addMenu(QString::fromUtf8(entry.label));
  submenu->setObjectName(QString::fromLatin1(entry.id) + QStringLiteral("_menu"));
  return submenu;
}

void follow_opening(QMenu* menu) {
  const MenuSetup* setup = setup_of(menu);
  if (!setup) return;
  QObject::connect(menu, &QMenu::aboutToShow, menu, [menu, setup] {
    open_setup(*setup, menu);
    if (setup->filled) setup->filled(menu);
  });
  QObject::connect(menu, &QMenu::aboutToHide, menu, [menu] { enable_all(menu); });
}

QMenu* bar_menu(QMainWindow* window, const MenuTitle& title) {
  const QString name = QString::fromLatin1(title.id);
  auto* menu = window->menuBar()->findChild<QMenu*>(name);
  if (!menu) {
    menu = window->menuBar()->addMenu(QString());
    menu->setObjectName(name);
  }
  menu->setTitle(QString::fromUtf8(title.label));
  return menu;
}

// While a text is edited, keys that edit text, or end the editing, are the field's, whatever the menus use
// them for.
class TextKeys : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() != QEvent::ShortcutOverride || !edits_text(object)) return false;
    auto* key = static_cast<QKeyEvent*>(event);
    if (!is_text_key(*key)) return false;
    key->accept();
    return true;
  }

 private:
  static bool edits_text(QObject* object) {
    if (auto* line = qobject_cast<QLineEdit*>(object)) return !line->isReadOnly();
    if (auto* text = qobject_cast<QTextEdit*>(object)) return !text->isReadOnly();
    if (auto* plain = qobject_cast<QPlainTextEdit*>(object)) return !plain->isReadOnly();
    return false;
  }
  static bool is_text_key(const QKeyEvent& key) {
    static constexpr QKeySequence::StandardKey kEditing[] = {
        QKeySequence::Cut,
        QKeySequence::Copy,
        QKeySequence::Paste,
        QKeySequence::SelectAll,
        QKeySequence::Undo,
        QKeySequence::Redo,
        QKeySequence::Delete,
        QKeySequence::DeleteCompleteLine,
        QKeySequence::DeleteStartOfWord,
        QKeySequence::DeleteEndOfWord,
        QKeySequence::DeleteEndOfLine,
    };
    if (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter || key.key() == Qt::Key_Backspace ||
        key.key() == Qt::Key_Delete)
      return true;
    for (QKeySequence::StandardKey standard : kEditing)
      if (key.matches(standard)) return true;
    return false;
  }
};
}  // namespace

void menus_create(QMainWindow* window) {
  sItems.clear();
  QHash<QString, QMenu*> menus, tops;
  for (const MenuTitle& title : kMenuBar) {
    QMenu* menu = bar_menu(window, title);
    menus.insert(menu->objectName(), menu);
    tops.insert(menu->objectName(), menu);
    follow_opening(menu);
  }
  for (const MenuEntry& entry : kMenuTable) {
    const QString parent = QString::fromLatin1(entry.parent), id = QString::fromLatin1(entry.id);
    QMenu* menu = menus.value(parent);
    if (entry.kind == MenuKind::separator) {
      menu->addSeparator();
      continue;
    }
    QAction* action = nullptr;
    if (entry.kind == MenuKind::submenu) {
      QMenu* submenu = add_submenu(menu, entry);
      menus.insert(id, submenu);
      tops.insert(id, tops.value(parent));
      action = submenu->menuAction();
    } else {
      action = add_item(menu, entry, tops.value(parent), window);
    }
    action->setObjectName(id);
    sItems.insert(id, action);
  }
  qApp->installEventFilter(new TextKeys(window));
}

QAction* menu_item(const char* identifier) {
  return sItems.value(QString::fromLatin1(identifier));
}

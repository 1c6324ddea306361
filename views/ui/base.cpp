#include "views/ui/base.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QStyle>
#include <QTimer>
#include <QToolButton>

#include "core/command_line.h"
#include "core/history.h"
#include "core/state.h"
#include "core/toolkit/contrast_style.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/fonts.h"
#include "core/toolkit/icons.h"
#include "core/ui/exit.h"
#include "dirmodel/dir_record.h"
#include "platform/desktop.h"
#include "ui_base.h"
#include "views/fname.h"
#include "views/hotlist.h"
#include "views/ui/base_wiring.h"
#include "views/ui/file_list_parts.h"
#include "views/ui/navigation.h"
#include "views/ui/pane_keys.h"
#include "views/ui/path_bar.h"
#include "views/ui/status_bar.h"

namespace {

void base_colours_changed() {
  contrast_style_update();
  tb_curpath_update_appearance();
}

// Closing by the window manager is the Exit command.
class BaseWindow : public QMainWindow {
 protected:
  void closeEvent(QCloseEvent* event) override {
    event->ignore();
    fm_exit();
  }
  // A theme may tell its colours late, or change them.
  void changeEvent(QEvent* event) override {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
      QTimer::singleShot(0, this, base_colours_changed);
  }
};

BaseWindow* sBase = nullptr;
Ui::base sUi;
bool sSaved = false;
bool sKeepTyping = false;

// So long the window waits for its first list, to be laid out and painted once: nearly all are read by then.
constexpr int kFirstListMs = 50;

struct ToolAction {
  QAction* Ui::base::*action;
  void (*handler)();
};
void refresh_list() {
  fl_refresh();
}
const ToolAction kNavigation[] = {
    {&Ui::base::tb_back, gm_back}, {&Ui::base::tb_forward, gm_forward},   {&Ui::base::tb_up, gm_up},
    {&Ui::base::tb_home, gm_home}, {&Ui::base::tb_refresh, refresh_list},
};

// The toolbars' buttons get the names of their actions, their images, and what they do.
void setup_toolbars() {
  for (QToolBar* bar : {sUi.nav_tb, sUi.hotlist_tb, sUi.clip_tb}) {
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    for (QAction* action : bar->actions()) {
      QWidget* button = bar->widgetForAction(action);
      button->setObjectName(action->objectName());
      button->setAccessibleName(action->text());
      action->setIcon(icon_get(action->objectName().toLatin1()));
    }
  }
  for (const ToolAction& tool : kNavigation)
    QObject::connect(sUi.*tool.action, &QAction::triggered, sBase, [handler = tool.handler] { handler(); });
}

int sane(int value, int least, int most) {
  return std::clamp(value, least, std::max(least, most));
}

bool typing_in_a_field() {
  for (QComboBox* combo : {sUi.tb_curpath, sUi.tb_filespec})
    if (combo->lineEdit()->hasFocus() && combo->lineEdit()->isModified()) return true;
  return false;
}

void place_window(const CommandLine& line) {
  QSize size = sBase->size();
  if (line.w && *line.w > 0) size.setWidth(sane(*line.w, 1, 16384));
  if (line.h && *line.h > 0) size.setHeight(sane(*line.h, 1, 16384));
  sBase->resize(size);
  if (line.x || line.y) {
    const QPoint now = sBase->pos();
    sBase->move(line.x.value_or(now.x()), line.y.value_or(now.y()));
  }
  if (line.state == 'i') sBase->setWindowState(Qt::WindowMinimized);
  if (line.state == 'm') sBase->setWindowState(Qt::WindowMaximized);
}

}  // namespace

QMainWindow* base_window() {
  return sBase;
}

QWidget* base_find_widget(const char* name) {
  return sBase ? sBase->findChild<QWidget*>(QString::fromLatin1(name)) : nullptr;
}

void base_create() {
  sBase = new BaseWindow;
  sSaved = false;
  sUi = {};
  sUi.setupUi(sBase);
  setup_toolbars();
  path_bar_setup(sUi.tb_curpath, sUi.tb_filespec);
  sUi.tree->setFont(font_from_name(QString::fromUtf8(gConfig->tree_font)));
  sUi.filelist->setFont(font_from_name(QString::fromUtf8(gConfig->list_font)));
  base_wire_tree(sUi.tree);
  tree_load(gConfigPath, "hotlist.001");
  fl_setup(sUi.filelist);
  base_wire_list(sUi.filelist);
  fl_set_notify_cb(base_update);
  pane_keys_setup(sBase, sUi.splitter, sUi.tree);
  base_set_divider_metrics(gConfig);
  base_set_window_metrics(gConfig);
  show_sort_method();
}

void base_show() {
  if (sBase && !program_ending()) sBase->setUpdatesEnabled(true);
}

void base_open(const CommandLine& line) {
  place_window(line);
  // The window manager frames it meanwhile; it is painted once, with its first list in it.
  sBase->setUpdatesEnabled(false);
  sBase->show();
  base_wire_menus(sBase);
  base_colours_changed();  // a window that is not shown yet is not told of a theme's change
  QTimer late;
  late.setSingleShot(true);
  QObject::connect(&late, &QTimer::timeout, sBase, base_show);
  late.start(kFirstListMs);
  fl_show_first(gStartPath, gStartElsewhere);
  QCoreApplication::processEvents();  // the focus, which would have it painted again, is often there by now
  base_show();
  show_sort_method();
}

void base_update() {
  if (!sBase) return;
  status_bar_update();
  tb_update();
  sBase->setWindowTitle(QStringLiteral("ZAN: ") + QString::fromUtf8(fname_decode(gDir.path.c_str())));
  if (sKeepTyping) return;
  tb_curpath_set_text(gDir.path.c_str());
  // The focus within the window only: a refresh must not bring it in front of what the user does elsewhere,
  // or of an operation's question.
  sUi.filelist->setFocus();
}

void signal_refresh() {
  if (base_window_closed || !sBase) return;
  sKeepTyping = typing_in_a_field();
  fl_refresh();
  sKeepTyping = false;
}

void base_set_window_metrics(const Settings* record) {
  const QSize most = dialog_room(sBase);
  const QSize size(sane(record->window_width, 200, most.width()),
                   sane(record->window_height, 150, most.height()));
  sBase->resize(size);
  const int hotlist = sane(record->hotlist_width, 96, size.width() - 120);
  sUi.splitter->setStretchFactor(0, 0);
  sUi.splitter->setStretchFactor(1, 1);
  sUi.splitter->setSizes({hotlist, size.width() - hotlist - sUi.splitter->handleWidth()});
}

void base_get_window_metrics(Settings* record) {
  record->window_width = sBase->width();
  record->window_height = sBase->height();
  if (!sUi.hotlist_panel->isHidden() && sUi.hotlist_panel->width() > 0)
    record->hotlist_width = sUi.hotlist_panel->width();
}

void base_set_divider_metrics(const Settings* record) {
  for (int i = 0; i < 6; ++i) fl_set_column_width(i + 1, record->column_width[i]);
  if (record->hotlist_shown) return;
  sUi.tb_hotlist->setChecked(false);
  sUi.hotlist_panel->hide();
}

void base_get_divider_metrics(Settings* record) {
  for (int i = 0; i < 6; ++i) record->column_width[i] = fl_get_column_width(i + 1);
}

static void save_once(bool measure) {
  if (!sBase || sSaved) return;
  sSaved = true;
  base_window_closed = 1;
  if (!gConfigPath) return;
  if (gConfig->save_on_exit) {
    if (measure) {
      base_get_window_metrics(gConfig);
      base_get_divider_metrics(gConfig);
    }
    settings_take_over(gConfig, gConfigPath, "config.003");
    init_save_config(gConfig, gConfigPath, "config.003");
  }
  init_save_cboxs(gConfigPath);
  init_destroy_cboxs();
  tree_take_over(gConfigPath, "hotlist.001");
  tree_save(gConfigPath, "hotlist.001");
}

void base_closing() {
  save_once(true);
}

void base_save_without_display() {
  save_once(false);
}

void base_destroy() {
  fl_destroy();
  delete std::exchange(sBase, nullptr);
}

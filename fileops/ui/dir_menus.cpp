#include "fileops/ui/dir_menus.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QTimer>

#include "core/history.h"
#include "core/state.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/message.h"
#include "dirmodel/dir_record.h"
#include "fileops/start.h"
#include "fileops/ui/dir_menu.h"
#include "ui_input_dest.h"
#include "views/fname.h"
#include "views/hotlist.h"
#include "views/path_check.h"
#include "views/ui/base.h"
#include "views/ui/path_bar.h"

namespace {
const char sCascadeMark[] = "dir_cascade";
const char sFilledMark[] = "dir_filled";

// The roots of the tree pane, at the first arming since the menus were opened.
void mgen_add_tree(DirMenu* cascade, void (*choose)(const char*)) {
  if (cascade->property(sFilledMark).toBool() || gTree.paths.empty()) return;
  cascade->setProperty(sFilledMark, true);
  cascade->addSeparator();
  const unsigned hide = gConfig->flags & SET_HIDE_DOT ? DIR_SCAN_HIDE_DOT : 0U;
  for (const std::string& path : gTree.paths)
    if (const char* encoded = fname_encode(path.c_str()))
      dtm_add_item(cascade, encoded, path, hide | DIR_SCAN_ROOT, choose);
}

// Ends the scans of a cascade by ending its entries; "Other..." stays.
void empty_cascade(DirMenu* cascade) {
  if (cascade->isVisible()) return;
  cascade->setProperty(sFilledMark, false);
  const auto actions = cascade->actions();
  for (qsizetype i = 1; i < actions.size(); ++i) delete actions[i];
}

void add_cascade(QMenu* menu, const char* name, const QString& label, void (*choose)(const char*)) {
  auto* cascade = new DirMenu(menu);
  cascade->setTitle(label);
  cascade->setObjectName(QLatin1String(name));
  cascade->menuAction()->setObjectName(QLatin1String(name));
  cascade->menuAction()->setProperty(sCascadeMark, true);
  QAction* other = cascade->addAction(QStringLiteral("Other..."));
  QObject::connect(other, &QAction::triggered, qApp,
                   [choose] { QTimer::singleShot(0, qApp, [choose] { choose(nullptr); }); });
  const auto fill = [cascade, choose] { mgen_add_tree(cascade, choose); };
  QObject::connect(cascade->menuAction(), &QAction::hovered, cascade, fill);
  QObject::connect(cascade, &QMenu::aboutToShow, cascade, fill);
  QObject::connect(menu, &QMenu::aboutToHide, cascade,
                   [cascade] { QTimer::singleShot(0, cascade, [cascade] { empty_cascade(cascade); }); });
  menu->addMenu(cascade);
}

bool confirm(const char* verb, const std::string& what, const char* destination) {
  const std::string shown = fname_decode(destination);
  const std::string message = std::string("Do you want to ") + verb + " " + what + " to\n'" + shown + "'\n";
  return walert(base_window(), QString::fromUtf8(verb), QString::fromUtf8(message.c_str()), "#&No|@&Yes") ==
         2;
}

// The typed destination with a "/" at its end; empty: none was given.
std::string input_dest(const QString& title) {
  QDialog dialog(base_window());
  Ui::input_dest ui;
  ui.setupUi(&dialog);
  dialog.setWindowTitle(title);
  ui.destination->lineEdit()->setMaxLength(1024);
  if (gCopyList) {
    gCopyList->flags |= 1;  // this list is a new one
    cl_apply(gCopyList, ui.destination);
  }
  ui.destination->setEditText(QString());
  QObject::connect(ui.ok, &QPushButton::clicked, &dialog, &QDialog::accept);
  QObject::connect(ui.cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
  dialog_fit(&dialog);
  if (dialog.exec() != QDialog::Accepted) return {};
  std::string text = ui.destination->currentText().toStdString();
  if (text.empty()) return {};
  if (gCopyList) cl_add(gCopyList, text.c_str());
  return text.back() == '/' ? text : text + "/";
}

void transfer_typed(int kind, const TransferList& list) {
  const std::string text =
      input_dest(kind == FOP_COPY ? QStringLiteral("Copy to") : QStringLiteral("Move to"));
  if (text.empty()) return;
  if (const char* encoded = fname_encode(text.c_str()))
    _file_op(kind, list, path_seen_from(list.dir, encoded));
  else
    wreport(base_window(), "Error", "Unable to translate '%s' into '%s' encoding.", text.c_str(),
            gConfig->encoding);
}

void transfer_selection(int kind, const char* destination) {
  const TransferList list = fl_pack_transf();
  if (list.names.empty()) return;
  if (!destination) return transfer_typed(kind, list);
  const size_t count = list.names.size();
  const std::string what = count > 1 ? std::to_string(count) + " files" : fname_decode(list.names[0].c_str());
  if (confirm(kind == FOP_COPY ? "copy" : "move", what, destination)) _file_op(kind, list, destination);
}
}  // namespace

void mgen_work_insert(QMenu* menu) {
  for (QAction* action : menu->actions())
    if (action->property(sCascadeMark).toBool()) delete action->menu();
  if (gDir.sel_count == 0) return;
  add_cascade(menu, "copy_to", QStringLiteral("Copy To"), x_copy_to_dest);
  add_cascade(menu, "move_to", QStringLiteral("Move To"), x_move_to_dest);
}

QAction* dtm_add_item(QMenu* menu, const std::string& path, const std::string& label, unsigned flags,
                      void (*on_choose)(const char* path)) {
  if (path.empty()) return nullptr;
  auto kind = std::make_shared<DirMenuKind>();
  kind->flags = flags & DIR_SCAN_HIDE_DOT;
  kind->on_choose = on_choose;
  auto* entry = new DirButton(menu, path, label, kind);
  menu->addAction(entry);
  if (flags & DIR_SCAN_ROOT) entry->probe();
  return entry;
}

void x_copy_to_dest(const char* destination) {
  transfer_selection(FOP_COPY, destination);
}

void x_move_to_dest(const char* destination) {
  transfer_selection(FOP_MOVE, destination);
}

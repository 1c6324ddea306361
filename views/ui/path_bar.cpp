#include "views/ui/path_bar.h"

#include <QComboBox>
#include <QCompleter>
#include <QElapsedTimer>
#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QToolButton>
#include <cstdlib>
#include <string>

#include "core/state.h"
#include "core/toolkit/escape_watch.h"
#include "core/toolkit/message.h"
#include "dirmodel/dir_record.h"
#include "dirmodel/fs_probe.h"
#include "dirmodel/text.h"
#include "platform/desktop.h"
#include "views/fname.h"
#include "views/hotlist.h"
#include "views/path_complete.h"
#include "views/ui/base.h"
#include "views/ui/navigation.h"

namespace {

constexpr int kEscapePairMs = 2000;

QComboBox* sPath = nullptr;
QComboBox* sFilter = nullptr;
qsizetype sPathKept = 0;  // characters of the path field that the next key does not replace

void tb_curpath_cb(const QString& text) {
  const std::string shown = text.toStdString();
  const char* path = fname_encode(shown.c_str());
  if (!path) {
    wreport(base_window(), "Error", "Unable to encode '%s' into '%s' encoding.", shown.c_str(),
            gConfig->encoding);
    return;
  }
  std::string cleaned = path;
  es_strip_pathname(&cleaned);
  if (cleaned == gDir.path) return base_update();  // Enter leaves the field, also when one is there already
  if (fl_newpath(cleaned.c_str()) != 0) return;
  cl_add(gPathList, fname_decode(gDir.path.c_str()));
  cl_apply(gPathList, sPath);
  tb_curpath_set_text(gDir.path.c_str());
}

void tb_filespec_cb(const QString& text) {
  const std::string spec = text.toStdString();
  if (fl_setspec(spec.c_str()) != 0) return base_update();
  cl_add(gSpecList, spec.c_str());
  cl_apply(gSpecList, sFilter);
}

// The typed text grew: completes it from the paths visited before, what was added being selected.
void complete_from_history(QLineEdit* line) {
  const QString typed = line->text();
  if (!(gOptions & OPT_PATH_COMPLETION) || typed.isEmpty() || line->cursorPosition() < typed.size()) return;
  const char* found = cl_find_pattern(gPathList, typed.toUtf8().constData());
  if (!found) return;
  const QString full = QString::fromUtf8(found);
  if (full.size() <= typed.size() && full == typed) return;
  line->setText(full);
  line->setModified(true);
  line->setSelection(int(typed.size()), int(full.size() - typed.size()));
}

void tb_curpath_notify(const QString& text) {
  if (text.size() > sPathKept) complete_from_history(sPath->lineEdit());
  if (gOptions & OPT_PATH_COLOUR) tb_curpath_update_appearance();
}

void complete_directory(QLineEdit* line) {
  if (line->hasSelectedText()) line->del();
  const std::string shown = line->text().toStdString();
  const char* typed = fname_encode(shown.c_str());
  if (!typed || !*typed) return;
  const EscapeWatch escape(base_window(), fs_give_up_looking);
  const char* found = find_matching_dir(std::string(typed).c_str());
  if (line->text().toStdString() != shown) return;  // a slow file system: the user has typed on
  if (!found) return desk_bell();
  const int length = int(std::string(found).size());
  line->setText(QString::fromUtf8(fname_decode(found)));
  line->setModified(true);
  line->setCursorPosition(length);
}

// Escape twice within two seconds completes the path. A second one that comes too late begins no new pair.
// It looks at the box, not at its line: the box has the focus and hands keys on without the line's filters.
class PathKeys : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
      event->accept();
      return true;
    }
    if (event->type() != QEvent::KeyPress) return false;
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() != Qt::Key_Escape || key->modifiers()) {
      escapes_ = 0;
      return false;
    }
    if (key->isAutoRepeat()) return true;
    if (++escapes_ == 1) {
      first_.start();
      return true;
    }
    escapes_ = 0;
    if (first_.elapsed() <= kEscapePairMs) complete_directory(static_cast<QComboBox*>(object)->lineEdit());
    return true;
  }

 private:
  int escapes_ = 0;
  QElapsedTimer first_;
};

// A pick is made in the list that drops down: neither the wheel, which turns while one scrolls by, nor an
// arrow key in the field goes through the entries, each of which would be gone to at once.
class PickOnlyFromList : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::Wheel) {
      event->ignore();
      return true;
    }
    if (event->type() != QEvent::KeyPress) return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Up || key == Qt::Key_Down) {
      static_cast<QComboBox*>(object)->showPopup();
      return true;
    }
    return key == Qt::Key_PageUp || key == Qt::Key_PageDown;
  }
};

// A box that is made editable builds its list and a completer at once. This one builds its list when it drops
// down, and completes in its own way.
void make_editable(QComboBox* combo, QCompleter* none) {
  auto* line = new QLineEdit(combo);
  // Else Shift+Tab comes upon the line first, and so to the box again. Once the line hands its focus to the
  // box, the toolkit would put the line behind itself, and others keep pointing to it when it is gone.
  QWidget::setTabOrder(combo, line);
  line->setCompleter(none);
  combo->setLineEdit(line);
  line->setCompleter(nullptr);
}

void setup_combo(QComboBox* combo, QCompleter* none) {
  make_editable(combo, none);
  combo->setDuplicatesEnabled(true);
  combo->installEventFilter(new PickOnlyFromList(combo));
  // The widget takes a text that is merely left behind for a pick when the list happens to hold it.
  QObject::disconnect(combo->lineEdit(), &QLineEdit::editingFinished, combo, nullptr);
  combo->lineEdit()->setAccessibleName(combo->accessibleName());
}

bool has_home() {
  const char* home = getenv("HOME");
  return home && gDir.path != home;
}

}  // namespace

void path_bar_setup(QComboBox* curpath, QComboBox* filespec) {
  sPath = curpath;
  sFilter = filespec;
  QCompleter none;
  setup_combo(sPath, &none);
  setup_combo(sFilter, &none);
  QLineEdit* line = sPath->lineEdit();
  sPath->installEventFilter(new PathKeys(sPath));
  QObject::connect(line, &QLineEdit::returnPressed, line, [] { tb_curpath_cb(sPath->currentText()); });
  QObject::connect(line, &QLineEdit::textEdited, line, tb_curpath_notify);
  const auto keep = [line] { sPathKept = line->text().size() - line->selectedText().size(); };
  QObject::connect(line, &QLineEdit::textChanged, line, keep);
  QObject::connect(line, &QLineEdit::selectionChanged, line, keep);
  QObject::connect(sPath, &QComboBox::textActivated, line, tb_curpath_cb);
  QLineEdit* filter = sFilter->lineEdit();
  QObject::connect(filter, &QLineEdit::returnPressed, filter, [] { tb_filespec_cb(sFilter->currentText()); });
  QObject::connect(sFilter, &QComboBox::textActivated, filter, tb_filespec_cb);
  cl_apply(gSpecList, sFilter);
  sFilter->setEditText(QStringLiteral("*"));
  fl_setspec("*");
  cl_apply(gPathList, sPath);
}

void tb_curpath_set_text(const char* path) {
  if (!sPath) return;
  sPath->setEditText(QString::fromUtf8(fname_decode(path)));
  sPath->lineEdit()->setModified(false);
  if (gOptions & OPT_PATH_COLOUR) tb_curpath_update_appearance();
}

void tb_curpath_update_appearance() {
  QLineEdit* line = sPath->lineEdit();
  const bool web = cl_is_web_address(line->text().toUtf8().constData()) != nullptr;
  QPalette palette;
  if (web) {
    // Pure blue is not readable on a dark ground: there its light shade serves.
    const bool dark = palette.color(QPalette::Base).lightness() < 128;
    palette.setColor(QPalette::Text, dark ? QColor(0x6f, 0xa8, 0xff) : QColor(0, 0, 0xff));
  }
  if (line->palette().color(QPalette::Text) != palette.color(QPalette::Text)) line->setPalette(palette);
}

void tb_update() {
  const struct {
    const char* name;
    bool on;
  } states[] = {
      {"tb_up", gDir.path != "/"},
      {"tb_home", has_home()},
      {"tb_add", tree_lookup(fname_decode(gDir.path.c_str())) == 0},
      {"tb_back", fl_get_back_count() > 0},
      {"tb_forward", fl_get_forward_count() > 0},
  };
  for (const auto& state : states)
    if (auto* button = base_find<QToolButton>(state.name))
      if (QAction* action = button->defaultAction()) action->setEnabled(state.on);
}

void cl_apply(History* history, QComboBox* combo) {
  if (!history || !combo || !(history->flags & 1)) return;
  history->flags &= ~1u;
  const QString text = combo->currentText();
  const QSignalBlocker quiet(combo);
  combo->clear();
  for (int n = 1; const char* entry = cl_get(history, n); ++n) combo->addItem(QString::fromUtf8(entry));
  combo->setEditText(text);
}

void cl_text_select(QComboBox* combo, int n) {
  if (combo && n >= 1 && n < combo->count()) combo->setCurrentIndex(n - 1);
}

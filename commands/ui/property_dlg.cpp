#include "commands/ui/property_dlg.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QPointer>
#include <array>

#include "commands/associations.h"
#include "commands/properties.h"
#include "commands/ui/show_entry.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/icons.h"
#include "core/toolkit/message.h"
#include "dirmodel/dir_record.h"
#include "platform/desktop.h"
#include "platform/detached.h"
#include "ui_property_dlg.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"

namespace {

constexpr int ICON_SIZE = 48;
constexpr int EVENTS_EVERY_MS = 100;
constexpr int FILETYPE_SHOWN = 300;  // characters; the tool tip has the rest
constexpr size_t FILETYPE_STACK = 256 * 1024;

QString utf8(const std::string& text) {
  return QString::fromStdString(text);
}

// The look of a field that can be edited, or of one that only shows.
void x_block_text(QLineEdit* field, bool blocked) {
  field->setReadOnly(blocked);
  field->setFocusPolicy(blocked ? Qt::NoFocus : Qt::StrongFocus);
  QPalette palette = field->parentWidget()->palette();
  if (palette.color(QPalette::Window).lightness() < 128) {  // a dark desktop keeps its own colours
    if (blocked) {
      palette.setColor(QPalette::Base, palette.color(QPalette::Window));
      palette.setColor(QPalette::Text, palette.color(QPalette::PlaceholderText));
    }
  } else {
    palette.setColor(QPalette::Base, blocked ? QColor(0xd9, 0xd9, 0xd9) : QColor(Qt::white));
    palette.setColor(QPalette::Text, blocked ? QColor(0x60, 0x60, 0x60) : QColor(Qt::black));
  }
  field->setPalette(palette);
}

// A path that can be scrolled and copied, but looks like any other value.
void show_path(QLineEdit* field, const std::string& path) {
  QPalette palette = field->palette();
  palette.setColor(QPalette::Base, Qt::transparent);
  field->setPalette(palette);
  field->setTextMargins(-2, 0, 0, 0);
  field->setFixedHeight(field->fontMetrics().height() + 2);
  field->setText(utf8(path));
  field->setCursorPosition(0);
  field->setToolTip(tip_text(utf8(path)));
}

const char* image_name(const DirEntry& entry) {
  const bool link = entry.flags & ENTRY_INFO;
  if (link && (entry.flags & ENTRY_UNREAD)) return "image_broken_link";
  if (dir_entry_is_directory(entry)) return link ? "linked_folder" : "closed_folder";
  if (entry.st.st_mode & S_IXUSR) return link ? "linked_exec" : "exec";
  return link ? "linked_file" : "file";
}

class PropertyDialog : public BusyDialog {
 public:
  explicit PropertyDialog(PropertyRecord record);
  int serial() const { return serial_; }
  void show_filetype(const std::string& text);
  void ask_filetype() const;

  void accept() override;
  void done(int result) override {
    QDialog::done(result);
    wblock(base_window(), 0);
  }

 private:
  void setup_one();
  void setup_multi();
  void x_setup_permission_fields();
  void _show_mode(mode_t mode);
  mode_t chosen_mode() const;
  PropertyChange change() const;
  std::string apply_all();

  using Toggle = std::pair<QCheckBox*, mode_t>;
  std::array<Toggle, 11> toggles() const;

  static int sSerial;
  const int serial_ = ++sSerial;
  Ui::property_dlg ui_;
  PropertyRecord record_;
};

int PropertyDialog::sSerial = 0;

PropertyDialog::PropertyDialog(PropertyRecord record)
    : BusyDialog(base_window()), record_(std::move(record)) {
  ui_.setupUi(this);
  ui_.pr_name->setText(utf8(record_.name));
  ui_.pr_comment->setText(utf8(record_.comment));
  ui_.pr_comment->setVisible(!record_.comment.empty());
  ui_.pr_size->setText(utf8(record_.size));
  show_path(ui_.pr_location, record_.location);
  show_path(ui_.pr_symbolic, record_.link);
  for (QWidget* widget :
       {static_cast<QWidget*>(ui_.pr_symbolic_title), static_cast<QWidget*>(ui_.pr_symbolic)}) {
    widget->setEnabled(!record_.link.empty());
  }
  if (record_.one_entry >= 0) {
    setup_one();
  } else {
    setup_multi();
  }
  x_setup_permission_fields();
  _show_mode(record_.mode);
  connect(ui_.pr_done, &QPushButton::clicked, this, [this] { accept(); });
  connect(ui_.pr_cancel, &QPushButton::clicked, this, &QDialog::reject);
}

void PropertyDialog::setup_one() {
  const DirEntry& entry = *gDir.entries[record_.one_entry];
  ui_.pr_icon->setPixmap(icon_get(image_name(entry)).pixmap(QSize(ICON_SIZE, ICON_SIZE), devicePixelRatio()));
  ui_.pr_modified->setText(utf8(record_.modified));
  x_block_text(ui_.pr_name, false);
  ui_.pr_name->setFocus();
  ui_.pr_name->selectAll();
}

void PropertyDialog::setup_multi() {
  ui_.pr_icon->setPixmap(icon_get("file").pixmap(QSize(ICON_SIZE, ICON_SIZE), devicePixelRatio()));
  x_block_text(ui_.pr_name, true);
  ui_.pr_name->setCursorPosition(0);
  ui_.pr_name->setToolTip(tip_text(ui_.pr_name->text()));
  for (QLabel* label : {ui_.pr_filetype_title, ui_.pr_filetype, ui_.pr_modified_title, ui_.pr_modified}) {
    label->setEnabled(false);
  }
  for (QLabel* label : {ui_.pr_size_title, ui_.pr_size}) label->setEnabled(!record_.size.empty());
  ui_.pr_uread->setFocus();
}

void PropertyDialog::x_setup_permission_fields() {
  x_block_text(ui_.pr_owner, true);
  x_block_text(ui_.pr_group, true);
  ui_.pr_owner->setText(utf8(record_.owner));
  ui_.pr_group->setText(utf8(record_.group));
}

// The sticky toggle is not among them: the bit is neither shown nor kept.
std::array<PropertyDialog::Toggle, 11> PropertyDialog::toggles() const {
  return {{{ui_.pr_uread, 0400},
           {ui_.pr_uwrite, 0200},
           {ui_.pr_uexec, 0100},
           {ui_.pr_gread, 040},
           {ui_.pr_gwrite, 020},
           {ui_.pr_gexec, 010},
           {ui_.pr_oread, 04},
           {ui_.pr_owrite, 02},
           {ui_.pr_oexec, 01},
           {ui_.pr_setuserid, 04000},
           {ui_.pr_setgroupid, 02000}}};
}

void PropertyDialog::_show_mode(mode_t mode) {
  for (const auto& [toggle, bit] : toggles()) toggle->setChecked(mode & bit);
}

mode_t PropertyDialog::chosen_mode() const {
  mode_t mode = 0;
  for (const auto& [toggle, bit] : toggles()) mode |= toggle->isChecked() ? bit : 0;
  return mode;
}

// Texts that stand as they were shown change nothing: a name that cannot be shown faithfully, or an owner's
// name that is cut, would not be found under its text.
PropertyChange PropertyDialog::change() const {
  const auto changed = [](const QLineEdit* field, const std::string& shown) {
    return field->text() == utf8(shown) ? std::string() : field->text().toStdString();
  };
  PropertyChange change;
  if (record_.one_entry >= 0) change.name = changed(ui_.pr_name, record_.name);
  change.owner = changed(ui_.pr_owner, record_.owner);
  change.group = changed(ui_.pr_group, record_.group);
  change.mode = chosen_mode();
  return change;
}

// Every entry is attempted, each error shown, unless the user has enough of waiting for a file system. The
// name to go to. The dialog may be gone when this returns.
std::string PropertyDialog::apply_all() {
  const QPointer<PropertyDialog> alive(this);
  const PropertyChange wanted = change();
  PropertyRecord record = record_;
  QElapsedTimer since_events;
  since_events.start();
  // Escape leaves out the changes that are still to come.
  for (size_t i = 0; i < record.entries.size() && alive && !given_up_; i++) {
    const std::string message = prop_apply(&record, i, wanted);
    if (!message.empty() && !(alive && given_up_)) wreport(alive, "Error", "%s", message.c_str());
    if (since_events.elapsed() < EVENTS_EVERY_MS) continue;
    desk_pending_events();
    since_events.start();
  }
  return record.entries[0].name;
}

void PropertyDialog::accept() {
  if (busy_) return;  // events run while a file system takes its time
  busy_ = true;
  setCursor(Qt::BusyCursor);
  const QPointer<PropertyDialog> alive(this);
  const std::string name = apply_all();
  if (!alive) return;
  if (given_up_) {  // the dialog first: reading may hang, too
    given_up();
    fl_refresh();
    return;
  }
  fl_refresh();
  show_entry(name, false);
  if (!alive) return;
  busy_ = false;
  QDialog::accept();
}

// A long text takes more lines than were kept for it.
void PropertyDialog::show_filetype(const std::string& text) {
  const QString type = utf8(text).trimmed();
  const bool long_one = type.size() > FILETYPE_SHOWN;
  ui_.pr_filetype->setText(long_one ? type.left(FILETYPE_SHOWN) + QChar(0x2026) : type);
  if (long_one) ui_.pr_filetype->setToolTip(QLatin1String("<qt>") + type.toHtmlEscaped());
  layout()->activate();
  const int needed = layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(width()) : 0;
  if (needed > height()) resize(width(), std::min(needed, dialog_room(this).height()));
}

// Finding out the type starts a program and reads the file: the dialog does not wait for it.
void PropertyDialog::ask_filetype() const {
  if (record_.one_entry < 0) return;
  detached_start(
      [serial = serial_, entry = record_.entries[0]] {
        std::string type;
        if (!as_get_filetype(entry.name.c_str(), entry.mode, &type)) return;
        desk_post([serial, type] {
          auto* dialog = dialog_one<PropertyDialog>();
          if (dialog && dialog->serial() == serial) dialog->show_filetype(type);
        });
      },
      FILETYPE_STACK);
}

}  // namespace

void property_dlg_open() {
  PropertyRecord record;
  if (dialog_one<PropertyDialog>() || !prop_gather(gDir, &record)) return;
  wblock(base_window(), 1);
  dialog_open_one<PropertyDialog>(base_window(), std::move(record));
  dialog_one<PropertyDialog>()->ask_filetype();
}

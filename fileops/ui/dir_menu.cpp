// A scan belongs to the entry whose submenu it fills; the entry's end cancels it and waits for nothing. A
// QMenu lays itself out anew whenever an action of a shown menu is added or changed, which thousands of
// entries cannot bear: entries are added behind its back, a slice at a time, and what changes about an entry
// while its menu is up (its colour, its arrow) is drawn from its state, without telling the menu.
#include "fileops/ui/dir_menu.h"

#include <QActionEvent>
#include <QApplication>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMouseEvent>
#include <QProxyStyle>
#include <QScreen>
#include <QStyleOptionMenuItem>
#include <QTimer>

#include "core/toolkit/fonts.h"
#include "core/toolkit/message.h"
#include "dirmodel/text.h"
#include "fileops/subdir_probe.h"
#include "platform/desktop.h"
#include "views/fname.h"
#include "views/ui/base.h"

namespace {
constexpr size_t ADDED_AT_ONCE = 1000;
constexpr QRgb UNKNOWN_COLOUR = 0xff909090;

class ScrollableMenus : public QProxyStyle {
 public:
  explicit ScrollableMenus(const QString& base) : QProxyStyle(base) { setParent(qApp); }
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* result) const override {
    return hint == SH_Menu_Scrollable ? 1 : QProxyStyle::styleHint(hint, option, widget, result);
  }
};

QStyle* scrollable_style() {
  static const QPointer<QStyle> style = new ScrollableMenus(QApplication::style()->name());
  return style;
}

// A label is one line, whatever the name holds, and its "&" no mnemonic.
QString entry_text(const std::string& label) {
  QString text = QString::fromUtf8(label.c_str());
  for (QChar& c : text)
    if (c.category() == QChar::Other_Control) c = QLatin1Char(' ');
  return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

void dismiss_menus() {
  QWidget* last = nullptr;
  for (QWidget* popup; (popup = QApplication::activePopupWidget()) && popup != last; last = popup)
    popup->close();
}
}  // namespace

DirMenu::DirMenu(QWidget* parent) : QMenu(parent) {
  setStyle(scrollable_style());
}

void DirMenu::append(const QList<QAction*>& actions) {
  const bool shown = isVisible();
  setAttribute(Qt::WA_WState_Visible, false);
  addActions(actions);
  setAttribute(Qt::WA_WState_Visible, shown);
}

void DirMenu::lay_out() {
  if (!isVisible()) return;
  QPoint at = pos();
  const auto* parent = qobject_cast<QMenu*>(parentWidget());
  const QRect area = screen()->availableGeometry();
  const int width = sizeHint().width();
  // Beside its parent on the other side, rather than over it and under the pointer.
  if (parent && at.x() > parent->x() && at.x() + width > area.right() && parent->x() - width >= area.left())
    at.setX(parent->x() - width);
  popup(at);
}

void DirMenu::lengthen() {
  if (!isVisible()) return;
  const int most = screen()->availableGeometry().right() - x();
  resize(std::max(width(), std::min(sizeHint().width(), most)), height());
  update();
}

void DirMenu::initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const {
  QMenu::initStyleOption(option, action);
  const auto* entry = dynamic_cast<const DirButton*>(action);
  if (!entry) return;
  if (entry->cascades()) option->menuItemType = QStyleOptionMenuItem::SubMenu;
  if (!entry->grey()) return;
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    option->palette.setColor(role, QColor(UNKNOWN_COLOUR));
}

void DirMenu::actionEvent(QActionEvent* event) {
  const bool entry = dynamic_cast<DirButton*>(event->action());
  if (event->type() != QEvent::ActionChanged || !entry || !isVisible()) QMenu::actionEvent(event);
}

// The entry under a press: while a submenu is up it gets the clicks that fall on the menus behind it.
DirButton* DirMenu::pressed_entry(const QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return nullptr;
  const QPoint at = event->globalPosition().toPoint();
  for (auto* menu = static_cast<QMenu*>(this); menu; menu = qobject_cast<QMenu*>(menu->parentWidget())) {
    const QPoint local = menu->mapFromGlobal(at);
    if (menu->isVisible() && menu->rect().contains(local))
      return dynamic_cast<DirButton*>(menu->actionAt(local));
  }
  return nullptr;
}

// Among popup windows not every display tells a second press from a first one.
void DirMenu::mousePressEvent(QMouseEvent* event) {
  static QPointer<DirButton> last;
  static quint64 last_time = 0;
  DirButton* entry = pressed_entry(event);
  const quint64 now = event->timestamp();
  if (entry && now != 0) {  // a press that a submenu handed on has no time
    const auto interval = static_cast<quint64>(QApplication::doubleClickInterval());
    const bool twice = entry == last && now - last_time < interval;
    last = entry;
    last_time = now;
    if (twice && entry->cascades()) return dtm_activate(entry, true);
  }
  QMenu::mousePressEvent(event);
}

void DirMenu::mouseDoubleClickEvent(QMouseEvent* event) {
  DirButton* entry = pressed_entry(event);
  if (entry && entry->cascades())
    dtm_activate(entry, true);
  else
    QMenu::mouseDoubleClickEvent(event);
}

DirButton::DirButton(QMenu* menu, const std::string& path, const std::string& label,
                     std::shared_ptr<const DirMenuKind> kind)
    : QAction(entry_text(label), menu), path_(path), kind_(std::move(kind)) {
  connect(this, &QAction::hovered, this, [this] {
    arm();
    if (!submenu_ || !kind_->armed) return;
    armed_ = true;
    if (!items_.empty()) return kind_->armed(submenu_);
    start_scan();
  });
  connect(this, &QAction::triggered, this, [this] { dtm_activate(this, false); });
}

DirButton::~DirButton() {
  subdir_probe_cancel(probe_);
  dir_scan_cancel(scan_);
  delete submenu_;
}

void DirButton::set_known(bool has_subdirectories) {
  state_ = has_subdirectories ? CASCADE : PLAIN;
  const bool scanning = scan_ && !scan_->finished;
  if (!has_subdirectories && !scanning) drop_submenu();
}

void DirButton::probe() {
  auto* menu = static_cast<QMenu*>(parent());
  probe_ = subdir_probe(
      path_, static_cast<int>(kind_->flags),
      [this, menu](int result) {
        set_known(result > 0);
        menu->update();
      },
      dir_scan_look);
}

void DirButton::prepare(std::function<void()> listed) {
  when_listed_ = std::move(listed);
  arm();
  start_scan();
}

void DirButton::arm() {
  if (submenu_ || state_ == PLAIN) return;
  submenu_ = new DirMenu(static_cast<QWidget*>(parent()));
  placeholder_ = submenu_->addAction(QStringLiteral("..."));
  placeholder_->setEnabled(false);
  connect(submenu_, &QMenu::aboutToShow, this, [this] { start_scan(); });
  setMenu(submenu_);
}

void DirButton::start_scan() {
  if (scanned_) return;
  scanned_ = true;
  DirScanCalls calls;
  calls.listed = [this](const DirNames& names) { listed(names); };
  calls.looked = [this](size_t first, const std::vector<char>& has) { looked(first, has); };
  calls.failed = [] { dtm_errinfo("Memory Allocation", "Not enough memory!"); };
  calls.ended = [this] { scan_ = nullptr; };
  scan_ = dir_scan_start(path_, kind_->flags, std::move(calls));
  if (!scan_) dtm_errinfo("Directory Scanning", "Unable to start scanning procedure!");
}

void DirButton::listed(const DirNames& names) {
  names_.assign(names.begin(), names.begin() + static_cast<ptrdiff_t>(std::min(names.size(), kind_->most)));
  has_.assign(names_.size(), -1);
  if (names_.empty()) {
    state_ = PLAIN;
    drop_submenu();
  } else {
    state_ = CASCADE;
    add_some();
    if (names.size() > names_.size()) add_inert_end();
    if (armed_) kind_->armed(submenu_);
  }
  if (when_listed_) when_listed_();
}

// Whether the pointer, and not the keyboard, stands on the entry.
bool DirButton::pointed_at() const {
  const auto* menu = static_cast<const QMenu*>(parent());
  return menu->actionGeometry(const_cast<DirButton*>(this)).contains(menu->mapFromGlobal(QCursor::pos()));
}

void DirButton::add_inert_end() {
  QAction* end = submenu_->addAction(QStringLiteral("too many items"));
  end->setEnabled(false);
  end->setFont(font_from_name(QStringLiteral("TextFont09i")));
  submenu_->lay_out();
}

// A slice of the entries, and the rest when events have run.
void DirButton::add_some() {
  const bool first = items_.empty();
  const size_t end = std::min(names_.size(), items_.size() + ADDED_AT_ONCE);
  QList<QAction*> actions;
  try {
    for (size_t i = items_.size(); i < end; ++i) {
      const std::string& name = names_[i];
      auto* item = new DirButton(submenu_, es_construct_fullpath(path_.c_str(), name.c_str()),
                                 fname_decode(name.c_str()), kind_);
      if (has_[i] >= 0) item->set_known(has_[i] > 0);
      items_.push_back(item);
      actions.append(item);
    }
  } catch (const std::bad_alloc&) {
    dtm_errinfo("Add Item", "Can't add item '" + names_[items_.size()] + "' into the menu");
    names_.resize(items_.size());
  }
  if (first) delete placeholder_;
  placeholder_ = nullptr;
  submenu_->append(actions);
  const bool last = items_.size() == names_.size();
  if (first)
    submenu_->lay_out();
  else
    submenu_->lengthen();
  if (first && submenu_->isVisible() && !submenu_->activeAction() && !pointed_at()) {
    QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);  // setActiveAction would open its submenu
    QApplication::sendEvent(submenu_, &down);
  }
  if (!last) QTimer::singleShot(0, submenu_, [this] { add_some(); });
}

void DirButton::looked(size_t first, const std::vector<char>& has) {
  for (size_t i = 0; i < has.size() && first + i < has_.size(); ++i) {
    has_[first + i] = has[i];
    if (first + i < items_.size()) items_[first + i]->set_known(has[i] > 0);
  }
  if (submenu_) submenu_->update();
}

void DirButton::drop_submenu() {
  if (!submenu_) return;
  DirMenu* menu = submenu_;
  submenu_ = nullptr;
  placeholder_ = nullptr;
  menu->hide();
  setMenu(nullptr);
  menu->deleteLater();
}

void dtm_activate(DirButton* entry, bool force) {
  if (entry->cascades() && !force) return;
  // Asks questions, so it has to wait until the menus, which may be destroyed with the entry, are gone.
  QTimer::singleShot(0, qApp, [choose = entry->on_choose(), path = entry->path()] { choose(path.c_str()); });
  dismiss_menus();
}

void dtm_errinfo(const std::string& title, const std::string& message) {
  desk_call([&] {
    walert_open(base_window(), QString::fromUtf8(title.c_str()), QString::fromUtf8(message.c_str()), "&Close",
                [](int) {});
  });
}

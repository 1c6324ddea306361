#include "core/toolkit/alert.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTimer>
#include <QWindow>
#include <algorithm>

#include "core/toolkit/dialogs.h"
#include "core/toolkit/fonts.h"
#include "core/toolkit/icons.h"
#include "core/toolkit/message.h"
#include "ui_alert.h"

namespace {
constexpr int sTypingMs = 400;
constexpr int sCascade = 28;  // pixels between two alerts that would cover each other
constexpr int sFoldAt = 24;   // characters of a word after which it may be broken

// When the user last typed into something that is not an alert. An alert that opens under the typing hands
// must not take a letter or Enter that was meant for the window it covers.
class TypingWatch : public QObject {
 public:
  static TypingWatch& instance() {
    static auto* watch = new TypingWatch;
    return *watch;
  }
  bool typing() const { return last_key_.isValid() && last_key_.elapsed() < sTypingMs; }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::KeyPress && object->isWidgetType() &&
        is_text(*static_cast<QKeyEvent*>(event)) &&
        dynamic_cast<AlertWindow*>(static_cast<QWidget*>(object)->window()) == nullptr)
      last_key_.start();
    return false;
  }

 private:
  static bool is_text(const QKeyEvent& key) {
    return !(key.modifiers() & ~Qt::ShiftModifier) && !key.text().isEmpty() && key.text()[0].isPrint();
  }
  TypingWatch() { qApp->installEventFilter(this); }
  QElapsedTimer last_key_;
};

// Lets a long path break between its parts, and a long name anywhere, with spaces of no width.
QString foldable(const QString& text) {
  QString folded;
  int run = 0;
  for (int i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    folded += c;
    run = c.isSpace() ? 0 : run + 1;
    const bool pair = c.isHighSurrogate() || (i + 1 < text.size() && text[i + 1].isMark());
    if (!pair && (c == QLatin1Char('/') || run >= sFoldAt)) folded += QChar(0x200b);
  }
  return folded;
}

QChar mnemonic_of(const QString& label) {
  for (int i = 0; i + 1 < label.size(); ++i) {
    if (label[i] != QLatin1Char('&')) continue;
    if (label[i + 1] != QLatin1Char('&')) return label[i + 1].toLower();
    ++i;
  }
  return {};
}

QString without_mnemonic(QString label) {
  for (int i = 0; i < label.size(); ++i)
    if (label[i] == QLatin1Char('&')) label.remove(i, 1);
  return label;
}
}  // namespace

void alert_watch_typing() {
  TypingWatch::instance();
}

void alert_open(QDialog* window, QWidget* owner, Qt::WindowModality modality) {
  window->setWindowModality(modality);
  window->setAttribute(Qt::WA_NativeWindow);
  if (QWidget* above = modality == Qt::NonModal ? QApplication::activeModalWidget() : nullptr)
    owner = above;  // else that one would block it
  if (owner != nullptr && owner->window()->windowHandle() != nullptr)
    window->windowHandle()->setTransientParent(owner->window()->windowHandle());
  dialog_fit(window);
  wcenter(owner, window);
  QWidgetList others = QApplication::topLevelWidgets();
  others.removeIf([window](QWidget* other) {
    return other == window || !other->isVisible() || qobject_cast<QDialog*>(other) == nullptr;
  });
  const QRect desktop = window->screen()->availableGeometry();
  const auto covered = [window](const QWidget* other) { return other->pos() == window->pos(); };
  while (std::any_of(others.begin(), others.end(), covered)) {
    window->move(window->pos() + QPoint(sCascade, sCascade));
    if (desktop.contains(QRect(window->pos(), window->size()))) continue;
    window->move(desktop.topLeft() + QPoint(sCascade * static_cast<int>(others.size() % 7), 0));
    break;
  }
  window->show();
  window->activateWindow();
}

AlertWindow::AlertWindow(const QString& title, const QString& message, const ButtonList& buttons,
                         std::function<void(int)> answered)
    : ui_(new Ui::alert), list_(buttons), answered_(std::move(answered)) {
  alert_watch_typing();
  ui_->setupUi(this);
  setWindowTitle(title);
  setAccessibleName(title);
  setAccessibleDescription(message);
  const int icon = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
  const bool question = list_.labels.size() > 1;
  ui_->alert_icon->setPixmap(
      icon_get(question ? "alert_question" : "alert_notice").pixmap(QSize(icon, icon), devicePixelRatio()));
  ui_->alert_message->setMinimumHeight(icon);
  add_buttons();
  fit_message(message);
}

AlertWindow::~AlertWindow() {
  answer(list_.escape_button);
}

void AlertWindow::fit_message(const QString& message) {
  QLabel* label = ui_->alert_message;
  label->setFont(font_from_name(QStringLiteral("helv12")));
  QString shown = message;
  while (shown.endsWith(QLatin1Char('\n'))) shown.chop(1);
  label->setText(foldable(unturned(shown)));
  label->setAccessibleName(message);
  const QRect desktop = QApplication::primaryScreen()->availableGeometry();
  const QFontMetrics metrics = label->fontMetrics();
  const int widest =
      std::min(desktop.width() * 2 / 3 - label->minimumHeight(), metrics.averageCharWidth() * 72);
  int text_width = 0;
  for (const QString& line : shown.split(QLatin1Char('\n')))
    text_width = std::max(text_width, metrics.horizontalAdvance(line) + 4);
  const int width = std::min(widest, std::max(text_width, metrics.averageCharWidth() * 36));
  const int height = std::max(label->heightForWidth(width), label->minimumHeight());
  const int visible = std::min(height, desktop.height() / 2);
  if (visible < height) ui_->alert_scroll->setFocusPolicy(Qt::StrongFocus);
  ui_->alert_scroll->setMinimumSize(width + (visible < height ? 24 : 0), visible);
}

void AlertWindow::add_buttons() {
  ui_->alert_buttons->addStretch();
  for (size_t i = 0; i < list_.labels.size(); ++i) {
    const int number = static_cast<int>(i) + 1;
    const QString label = QString::fromStdString(list_.labels[i]);
    auto* button = new QPushButton(label, this);
    button->setObjectName(QStringLiteral("alert_button_%1").arg(number));
    button->setAccessibleName(without_mnemonic(label));
    button->setDefault(number == list_.default_button);
    connect(button, &QPushButton::clicked, this, [this, number] { answer(number); });
    ui_->alert_buttons->addWidget(button);
    buttons_.push_back(button);
  }
  buttons_[list_.default_button - 1]->setFocus();
}

void AlertWindow::open_over(QWidget* owner, Qt::WindowModality modality) {
  alert_open(this, owner, modality);
}

void AlertWindow::keyPressEvent(QKeyEvent* event) {
  if (event->isAutoRepeat() || TypingWatch::instance().typing()) return;
  if (!(event->modifiers() & ~Qt::ShiftModifier) && event->text().size() == 1) {
    const QChar letter = event->text()[0].toLower();
    for (size_t i = 0; i < list_.labels.size(); ++i)
      if (letter.isLetterOrNumber() && mnemonic_of(QString::fromStdString(list_.labels[i])) == letter) {
        buttons_[i]->click();
        return;
      }
  }
  QDialog::keyPressEvent(event);
}

void AlertWindow::done(int result) {
  QDialog::done(result);
  answer(list_.escape_button);
}

void AlertWindow::answer(int number) {
  if (!answered_) return;
  const auto answered = std::move(answered_);
  answered_ = nullptr;
  hide();
  deleteLater();
  answered(number);
}

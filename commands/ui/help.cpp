#include "commands/ui/help.h"

#include <QDialog>
#include <QKeySequence>
#include <QMainWindow>
#include <QPointer>
#include <QPushButton>
#include <QScreen>

#include "commands/ui/menu_table.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/icons.h"
#include "core/toolkit/message.h"
#include "ui_about.h"
#include "ui_quickref.h"
#include "views/ui/base.h"

namespace {
constexpr int kAboutIcon = 64, kHelpMargin = 12;  // pixels at scale 1

// What a newcomer does not find in the menus. The keys of the menus follow from the menus' own table.
struct HelpTopic {
  const char* title;
  const char* text;
};
const HelpTopic kHelpTopics[] = {
    {"One directory at a time",
     "<p>The list shows one directory. <b>Enter</b> or a double click opens what is current: a directory is "
     "entered, a file goes to the command that its name's association names. The row <b>..</b>, "
     "<b>Backspace</b> "
     "and Up lead one level up; Back and Forward retrace the last ten directories.</p>"
     "<p>The path field takes a path; while you type, it is completed from the paths used before. "
     "<b>Escape</b> "
     "twice completes the name of a directory. The filter field shows only files whose names match: "
     "<b>*.c|*.h</b>; a leading <b>^</b> ignores case. A click on a column's header, or <b>Ctrl</b> with "
     "its number, sorts by it, a second one turns the order round.</p>"},
    {"Finding by typing",
     "<p>Typing in the list goes to the first name that begins with what you typed, or that matches it as a "
     "pattern. <b>Enter</b> opens it, <b>Escape</b> forgets it, and so does a pause.</p>"
     "<p><b>/</b> does the same, and with nothing typed behind it <b>Enter</b> repeats the last search. "
     "<b>?</b> "
     "searches backwards. <b>:</b> takes a shell command, which <b>Enter</b> runs in a terminal that stays "
     "open.</p>"},
    {"Selecting",
     "<p>A click selects one entry; with <b>Ctrl</b> it adds or removes one, with <b>Shift</b> everything in "
     "between. Whole patterns are selected from the Edit menu. The left status pane counts what is selected, "
     "the "
     "right one what is there.</p>"},
    {"Copying and moving",
     "<p>Cut and Copy remember the selection, Paste brings it into the directory shown: in this window, in "
     "another one, or in another file manager. What is cut stays in place, marked, until it is pasted.</p>"
     "<p>Dragging moves, with <b>Ctrl</b> it copies: onto a directory, onto <b>..</b>, onto the empty part "
     "of a list or onto its header. Copy To and Move To in the Edit menu lead through directories; a double "
     "click chooses one that "
     "holds others.</p>"
     "<p>Each operation runs by itself in a slot with its progress, a pause and a cancel button. Nothing is "
     "overwritten without a question unless the preferences say so.</p>"},
    {"The hotlist",
     "<p>The pane on the left holds your favourite directories, each a tree that unfolds. Drag them into the "
     "order you like, or move the current one with <b>Alt+Shift+Up</b> and <b>Down</b>; the Hotlist menu "
     "lists the "
     "same paths. <b>Alt+Shift+Left</b> and <b>Right</b> move the divider between the panes, <b>Tab</b> goes "
     "from "
     "one to the next, <b>Shift+F10</b> or the menu key opens the context menu.</p>"},
};

QString help_topic_html(const HelpTopic& topic) {
  return QStringLiteral("<h3>%1</h3>%2").arg(QString::fromUtf8(topic.title), QString::fromUtf8(topic.text));
}

QString plain_label(QString label) {
  label.remove(QLatin1Char('&'));
  if (label.endsWith(QLatin1String("..."))) label.chop(3);
  return label.toHtmlEscaped();
}

const char* menu_label(const char* id) {
  for (const MenuTitle& title : kMenuBar)
    if (std::string_view(title.id) == id) return title.label;
  for (const MenuEntry& entry : kMenuTable)
    if (std::string_view(entry.id) == id) return entry.label;
  return "";
}

// "Edit, Select, All": the way to an item through the menus.
QString way_to(const MenuEntry& entry) {
  QString way = plain_label(QString::fromUtf8(entry.label));
  const char* parent = entry.parent;
  while (*parent != '\0') {
    way.prepend(plain_label(QString::fromUtf8(menu_label(parent))) + QStringLiteral(" \u203a "));
    const char* above = "";
    for (const MenuEntry& other : kMenuTable)
      if (std::string_view(other.id) == parent) above = other.parent;
    parent = above;
  }
  return way;
}

QString help_keys_html() {
  QString html = QStringLiteral("<h3>Keys</h3><table cellspacing='0' cellpadding='3'>");
  for (const MenuEntry& entry : kMenuTable) {
    if (*entry.keys == '\0') continue;
    const QKeySequence keys(QString::fromLatin1(entry.keys), QKeySequence::PortableText);
    html += QStringLiteral("<tr><td width='130'><b>%1</b></td><td>%2</td></tr>")
                .arg(keys.toString(QKeySequence::NativeText).toHtmlEscaped(), way_to(entry));
  }
  return html + QStringLiteral(
                    "</table><p>In the path and filter fields, the keys that edit text edit text there.</p>");
}

// A window of its own beside the main one, made once and shown again.
template <class Form>
class HelpWindow : public QDialog {
 public:
  HelpWindow() : QDialog(base_window()) { form.setupUi(this); }
  Form form;
};

void show_over_base(QDialog* window) {
  if (!window->isVisible()) wcenter(base_window(), window);
  window->show();
  window->raise();
  window->activateWindow();
}
}  // namespace

void help_quickref() {
  static QPointer<HelpWindow<Ui::quickref>> window;
  if (!window) {
    window = new HelpWindow<Ui::quickref>;
    QString html = help_keys_html();
    for (const HelpTopic& topic : kHelpTopics) html += help_topic_html(topic);
    window->form.quickref_text->setHtml(html);
    window->form.quickref_text->document()->setDocumentMargin(kHelpMargin);
    window->resize(window->size().boundedTo(window->screen()->availableSize() * 9 / 10));
    QObject::connect(window->form.quickref_buttons, &QDialogButtonBox::rejected, window, &QDialog::close);
  }
  show_over_base(window);
}

void help_about() {
  static QPointer<HelpWindow<Ui::about>> window;
  if (!window) {
    window = new HelpWindow<Ui::about>;
    window->form.about_icon->setPixmap(icon_get("zan").pixmap(kAboutIcon, kAboutIcon));
    window->form.about_version->setText(QStringLiteral("Version " ZAN_VERSION));
    dialog_fit(window);
    QObject::connect(window->form.about_buttons, &QDialogButtonBox::rejected, window, &QDialog::close);
  }
  show_over_base(window);
}

#include "fileops/ui/long_filename_dlg.h"

#include <QClipboard>
#include <QLineEdit>
#include <QPointer>
#include <atomic>
#include <thread>

#include "platform/desktop.h"
#include "tests/face/window_test.h"

namespace {
struct Asked {
  explicit Asked(const QString& proposal) {
    dialog = new LongFilenameDialog(QStringLiteral("old"), proposal, [this](const QString* newfile) {
      ++answers;
      answer = newfile ? *newfile : QStringLiteral("skip");
    });
    dialog->show();
    field = dialog->findChild<QLineEdit*>(QStringLiteral("long_filename_newname"));
  }
  ~Asked() { delete dialog; }
  QPointer<LongFilenameDialog> dialog;
  QLineEdit* field;
  int answers = 0;
  QString answer;
};
}  // namespace

TEST(LongFilename, TheLimitCountsBytesAtWholeCharacters) {
  const QString umlaut(QChar(0xe4)), smile = QString::fromUtf8("\xf0\x9f\x99\x82"), a(QLatin1Char('a'));
  const std::pair<QString, QString> rows[] = {
      {a.repeated(60), a.repeated(47)},
      {umlaut.repeated(40), umlaut.repeated(23)},  // 46 bytes: half a character is none
      {a.repeated(45) + smile, a.repeated(45)},
  };
  for (const auto& [typed, kept] : rows) {
    Asked asked(typed);
    EXPECT_EQ(asked.field->text(), kept);
    QApplication::clipboard()->setText(typed);
    asked.field->selectAll();
    asked.field->paste();
    EXPECT_EQ(asked.field->text(), kept);
  }
  Asked middle(QStringLiteral("begin-end.txt"));  // what stood behind the cursor stays
  middle.field->setCursorPosition(6);
  QApplication::clipboard()->setText(a.repeated(60));
  middle.field->paste();
  EXPECT_EQ(middle.field->text(), QStringLiteral("begin-") + a.repeated(34) + QStringLiteral("end.txt"));
}

TEST(LongFilename, EveryWayOut) {
  const char *field = "long_filename_newname", *skip = "long_filename_skip", *rename = "long_filename_rename";
  const struct {
    const char* typed;  // null: the proposal stays
    const char* focus;
    Qt::Key key;  // 0: close the window
    Qt::KeyboardModifiers modifiers;
    const char* answer;
  } rows[] = {
      {"short", field, Qt::Key_Return, {}, "short"},
      {"", field, Qt::Key_Return, {}, "proposal"},
      {nullptr, field, Qt::Key_Escape, {}, "skip"},
      {"short", field, Qt::Key(0), {}, "skip"},
      {"short", field, Qt::Key_S, Qt::AltModifier, "skip"},
      {"short", field, Qt::Key_R, Qt::AltModifier, "short"},
      {nullptr, skip, Qt::Key_R, {}, "proposal"},
      {nullptr, rename, Qt::Key_S, {}, "skip"},
      {nullptr, skip, Qt::Key_Space, {}, "skip"},
  };
  for (const auto& row : rows) {
    Asked asked(QStringLiteral("proposal"));
    ASSERT_TRUE(QTest::qWaitForWindowActive(asked.dialog));
    auto* focus = asked.dialog->findChild<QWidget*>(QString::fromUtf8(row.focus));
    focus->setFocus();
    if (row.typed != nullptr) asked.field->setText(QString::fromUtf8(row.typed));
    if (row.key == 0)
      asked.dialog->close();
    else
      QTest::keyClick(focus, row.key, row.modifiers);
    EXPECT_TRUE(wait_for([&] { return asked.answers == 1; })) << row.key;
    EXPECT_EQ(asked.answer, QString::fromUtf8(row.answer)) << row.key;
  }
}

TEST(LongFilename, TwoWorkersGetTheirOwnAnswers) {
  std::string names[2] = {"first", "second"};
  bool renamed[2];
  std::thread workers[2];
  for (int i : {0, 1}) workers[i] = std::thread([&, i] { renamed[i] = desk_long_name("old", &names[i]); });
  QList<QWidget*> open;
  ASSERT_TRUE(wait_for([&] {
    open.clear();
    for (QWidget* widget : QApplication::topLevelWidgets())
      if (widget->isVisible() && dynamic_cast<LongFilenameDialog*>(widget) != nullptr) open.append(widget);
    return open.size() == 2;
  }));
  EXPECT_NE(open[0]->pos(), open[1]->pos());
  for (QWidget* dialog : open) {
    auto* field = dialog->findChild<QLineEdit*>(QStringLiteral("long_filename_newname"));
    const bool first = field->text() == QStringLiteral("first");
    field->setText(QStringLiteral("answer of ") + field->text());
    QTest::keyClick(field, first ? Qt::Key_Return : Qt::Key_Escape);
  }
  for (auto& worker : workers) worker.join();
  EXPECT_TRUE(renamed[0] && !renamed[1]);
  EXPECT_EQ(names[0] + ", " + names[1], "answer of first, second");
}

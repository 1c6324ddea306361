#include "fileops/ui/long_filename_dlg.h"

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
    const char *typed, *focus;
    Qt::Key key;  // 0: close the window
    Qt::KeyboardModifiers modifiers;
    const char* answer;
  } rows[] = {
      {"short", field, Qt::Key_Return, {}, "short"},
      {"", field, Qt::Key_Return, {}, "proposal"},
      {"short", field, Qt::Key_Escape, {}, "skip"},
      {"short", field, Qt::Key(0), {}, "skip"},
      {"short", field, Qt::Key_S, Qt::AltModifier, "skip"},
      {"short", field, Qt::Key_R, Qt::AltModifier, "short"},
      {"short", skip, Qt::Key_R, {}, "short"},
      {"short", rename, Qt::Key_S, {}, "skip"},
      {"short", skip, Qt::Key_Space, {}, "skip"},
  };
  for (const auto& row : rows) {
    Asked asked(QStringLiteral("proposal"));
    ASSERT_TRUE(QTest::qWaitForWindowActive(asked.dialog));
    asked.field->setText(QString::fromUtf8(row.typed));
    auto* focus = asked.dialog->findChild<QWidget*>(QString::fromUtf8(row.focus));
    focus->setFocus();
    if (row.key == 0)
      asked.dialog->close();
    else
      QTest::keyClick(focus, row.key, row.modifiers);
    EXPECT_TRUE(wait_for([&] { return asked.answers == 1; })) << row.key;
    EXPECT_EQ(asked.answer, QString::fromUtf8(row.answer)) << row.key;
  }
}

TEST(LongFilename, AWorkerWaitsForItsAnswer) {
  for (const bool rename : {true, false}) {
    std::string name = "proposal";
    std::atomic<int> renamed{-1};
    std::thread worker([&] { renamed = desk_long_name("old", &name); });
    EXPECT_TRUE(wait_for([&] {
      auto* dialog = dynamic_cast<LongFilenameDialog*>(QApplication::activeWindow());
      if (dialog)
        WindowTest::find<QLineEdit>(dialog, "long_filename_newname")->setText(QStringLiteral("answer"));
      if (dialog) QTest::keyClick(dialog, rename ? Qt::Key_Return : Qt::Key_Escape);
      return renamed >= 0;
    }));
    worker.join();
    EXPECT_EQ(renamed, rename);
    EXPECT_EQ(name, rename ? "answer" : "proposal");
  }
}

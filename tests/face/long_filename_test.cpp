#include "fileops/ui/long_filename_dlg.h"

#include <atomic>
#include <thread>

#include "platform/desktop.h"
#include "tests/face/window_test.h"

TEST(LongFilename, TheLimitCountsBytesAtWholeCharacters) {
  const QString umlaut(QChar(0xe4)), smile = QString::fromUtf8("\xf0\x9f\x99\x82"), a(QLatin1Char('a'));
  const std::pair<QString, QString> rows[] = {
      {a.repeated(60), a.repeated(47)},
      {umlaut.repeated(40), umlaut.repeated(23)},  // 46 bytes: half a character is none
      {a.repeated(45) + smile, a.repeated(45)},
  };
  for (const auto& [typed, kept] : rows) {
    LongFilenameDialog dialog(QStringLiteral("old"), typed, [](const QString*) {});
    auto* field = WindowTest::find<QLineEdit>(&dialog, "long_filename_newname");
    EXPECT_EQ(field->text(), kept);
    QApplication::clipboard()->setText(typed);
    field->selectAll();
    field->paste();
    EXPECT_EQ(field->text(), kept);
    field->setText(QStringLiteral("begin-end.txt"));  // what stands behind the cursor stays
    field->setCursorPosition(6);
    QApplication::clipboard()->setText(a.repeated(60));
    field->paste();
    EXPECT_EQ(field->text(), QStringLiteral("begin-") + a.repeated(34) + QStringLiteral("end.txt"));
  }
}

TEST(LongFilename, AWorkerWaitsForEachWayOut) {
  const char *field = "long_filename_newname", *skip = "long_filename_skip", *rename = "long_filename_rename";
  const struct {
    const char *typed, *focus;
    Qt::Key key;  // 0: close the window
    Qt::KeyboardModifiers modifiers;
    const char* answer;  // empty: it is skipped
  } rows[] = {
      {"short", field, Qt::Key_Return, {}, "short"},    {"", field, Qt::Key_Return, {}, "proposal"},
      {"short", field, Qt::Key_Escape, {}, ""},         {"short", field, Qt::Key(0), {}, ""},
      {"short", field, Qt::Key_S, Qt::AltModifier, ""}, {"short", field, Qt::Key_R, Qt::AltModifier, "short"},
      {"short", skip, Qt::Key_R, {}, "short"},          {"short", rename, Qt::Key_S, {}, ""},
      {"short", skip, Qt::Key_Space, {}, ""},
  };
  for (const auto& row : rows) {
    std::string name = "proposal";
    std::atomic<int> renamed{-1};
    std::thread worker([&] { renamed = desk_long_name("old", &name); });
    QPointer<LongFilenameDialog> dialog;
    EXPECT_TRUE(wait_for([&] {
      dialog = dynamic_cast<LongFilenameDialog*>(QApplication::activeWindow());
      return dialog != nullptr;
    }));
    WindowTest::find<QLineEdit>(dialog, field)->setText(QString::fromUtf8(row.typed));
    auto* focus = WindowTest::find<QWidget>(dialog, row.focus);
    focus->setFocus();
    if (row.key == 0)
      dialog->close();
    else
      QTest::keyClick(focus, row.key, row.modifiers);
    EXPECT_TRUE(wait_for([&] { return renamed >= 0 && !dialog; })) << row.key;
    worker.join();
    EXPECT_EQ(renamed ? name : "", row.answer) << row.key;
  }
}

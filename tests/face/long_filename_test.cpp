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
      {a.repeated(45) + smile, a.repeated(45)}};
  for (const auto& [typed, kept] : rows) {
    LongFilenameDialog dialog(QStringLiteral("old"), typed, [](const QString*) {});
    auto* field = WindowTest::line(&dialog, "long_filename_newname");
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
  // What is typed, where which keys are then pressed ("": the window is closed), and the name ("": skipped).
  const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
      {"short", field, "Return", "short"}, {"", field, "Return", "proposal"},
      {"short", field, "Esc", ""},         {"short", field, "", ""},
      {"short", field, "Alt+S", ""},       {"short", field, "Alt+R", "short"},
      {"short", skip, "R", "short"},       {"short", rename, "S", ""},
      {"short", skip, "Space", ""}};
  for (const auto& [typed, focus, keys, answer] : rows) {
    std::string name = "proposal";
    std::atomic<int> renamed{-1};
    std::thread worker([&renamed, &name] { renamed = desk_long_name("old", &name); });
    QPointer<LongFilenameDialog> dialog;
    EXPECT_TRUE(wait_for([&dialog] {
      dialog = dynamic_cast<LongFilenameDialog*>(QApplication::activeWindow());
      return dialog != nullptr;
    }));
    WindowTest::line(dialog, field)->setText(QString::fromUtf8(typed));
    auto* focused = WindowTest::find<QWidget>(dialog, focus);
    focused->setFocus();
    if (*keys)
      press(keys, focused);
    else
      dialog->close();
    EXPECT_TRUE(wait_for([&] { return renamed >= 0 && !dialog; })) << keys;
    worker.join();
    EXPECT_EQ(renamed ? name : "", answer) << keys;
  }
}

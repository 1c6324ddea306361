#include "fileops/ui/long_filename_dlg.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <atomic>
#include <thread>

#include "platform/desktop.h"

namespace {
struct Asked {
  explicit Asked(const QString& proposal) {
    dialog = new LongFilenameDialog(QStringLiteral("old"), proposal, [this](const QString* newfile) {
      ++answers;
      renamed = newfile != nullptr;
      if (newfile != nullptr) name = *newfile;
    });
    dialog->show();
    field = dialog->findChild<QLineEdit*>(QStringLiteral("long_filename_newname"));
  }
  ~Asked() { delete dialog; }
  QPointer<LongFilenameDialog> dialog;
  QLineEdit* field;
  int answers = 0;
  bool renamed = false;
  QString name;
};
}  // namespace

TEST(LongFilename, TheLimitCountsBytesAtWholeCharacters) {
  const QString umlaut(QChar(0xe4)), smile = QString::fromUtf8("\xf0\x9f\x99\x82");
  struct Row {
    QString typed;
    QString kept;
  };
  const Row rows[] = {
      {QString(60, QLatin1Char('a')), QString(47, QLatin1Char('a'))},
      {umlaut.repeated(40), umlaut.repeated(23)},  // 46 bytes: half a character is none
      {smile.repeated(20), smile.repeated(11)},    // 44 bytes
      {QString(45, QLatin1Char('a')) + smile, QString(45, QLatin1Char('a'))},
  };
  for (const Row& row : rows) {
    Asked proposed(row.typed);
    EXPECT_EQ(proposed.field->text(), row.kept);
    Asked pasted(QStringLiteral("x"));
    QApplication::clipboard()->setText(row.typed);
    pasted.field->selectAll();
    pasted.field->paste();
    EXPECT_EQ(pasted.field->text(), row.kept);
  }
  Asked middle(QStringLiteral("begin-end.txt"));  // what stood behind the cursor stays
  middle.field->setCursorPosition(6);
  QApplication::clipboard()->setText(QString(60, QLatin1Char('m')));
  middle.field->paste();
  EXPECT_EQ(middle.field->text(),
            QStringLiteral("begin-") + QString(34, QLatin1Char('m')) + QStringLiteral("end.txt"));
}

TEST(LongFilename, EveryWayOut) {
  struct Row {
    const char* typed;  // null: the proposal stays
    const char* focus;
    Qt::Key key;  // 0: close the window
    Qt::KeyboardModifiers modifiers;
    bool renamed;
    const char* name;
  };
  const char *field = "long_filename_newname", *skip = "long_filename_skip", *rename = "long_filename_rename";
  const Row rows[] = {
      {"short", field, Qt::Key_Return, {}, true, "short"},
      {"", field, Qt::Key_Return, {}, true, "proposal"},
      {nullptr, field, Qt::Key_Escape, {}, false, ""},
      {"short", field, Qt::Key(0), {}, false, ""},
      {"short", field, Qt::Key_S, Qt::AltModifier, false, ""},
      {"short", field, Qt::Key_R, Qt::AltModifier, true, "short"},
      {nullptr, skip, Qt::Key_R, {}, true, "proposal"},
      {nullptr, rename, Qt::Key_S, {}, false, ""},
      {nullptr, skip, Qt::Key_Space, {}, false, ""},
  };
  for (const Row& row : rows) {
    Asked asked(QStringLiteral("proposal"));
    ASSERT_TRUE(QTest::qWaitForWindowActive(asked.dialog));
    auto* focus = asked.dialog->findChild<QWidget*>(QString::fromUtf8(row.focus));
    focus->setFocus();
    if (row.typed != nullptr) asked.field->setText(QString::fromUtf8(row.typed));
    if (row.key == 0)
      asked.dialog->close();
    else
      QTest::keyClick(focus, row.key, row.modifiers);
    EXPECT_TRUE(QTest::qWaitFor([&] { return asked.answers == 1; })) << row.key;
    EXPECT_EQ(asked.renamed, row.renamed) << row.key;
    EXPECT_EQ(asked.name, QString::fromUtf8(row.name)) << row.key;
  }
}

TEST(LongFilename, TwoWorkersGetTheirOwnAnswers) {
  std::string names[2] = {"first", "second"};
  std::atomic<int> done{0};
  bool renamed[2];
  std::thread workers[2];
  for (int i : {0, 1})
    workers[i] = std::thread([&, i] {
      renamed[i] = desk_long_name("old", &names[i]);
      ++done;
    });
  QList<QWidget*> open;
  ASSERT_TRUE(QTest::qWaitFor([&] {
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
  EXPECT_TRUE(renamed[0]);
  EXPECT_EQ(names[0], "answer of first");
  EXPECT_FALSE(renamed[1]);
  EXPECT_EQ(names[1], "second");
}

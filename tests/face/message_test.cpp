#include "core/toolkit/message.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "core/toolkit/timers.h"

namespace {
QWidget* open_alert_named(const QString& title) {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isVisible() && widget->windowTitle() == title) return widget;
  return nullptr;
}

// Runs act on the window of that title once it is there.
template <class Act>
void when_open(const char* title, Act act) {
  auto* timer = new QTimer;
  QObject::connect(timer, &QTimer::timeout, timer, [=] {
    QWidget* window = open_alert_named(QString::fromUtf8(title));
    if (window == nullptr || !window->isActiveWindow()) return;  // a mnemonic needs the active one
    timer->stop();
    timer->deleteLater();
    act(window);
  });
  timer->start(1);
}
}  // namespace

TEST(Message, EveryWayOfAnsweringGivesItsButton) {
  struct Row {
    const char* buttons;
    int key;  // 0: close the window
    Qt::KeyboardModifiers modifiers;
    int answer;
  };
  QTest::qWait(450);  // what an earlier test typed is not typing any more
  const char* conflict = "&Skip|&Overwrite|Overwrite &All|a&Bort";
  const Row rows[] = {
      {conflict, Qt::Key_Return, {}, 1},
      {conflict, Qt::Key_Escape, {}, 4},
      {conflict, 0, {}, 4},
      {conflict, Qt::Key_O, {}, 2},
      {conflict, Qt::Key_A, {}, 3},
      {conflict, Qt::Key_B, Qt::ShiftModifier, 4},
      {conflict, Qt::Key_B, Qt::AltModifier, 4},
      {"&Files|@&Links|#&Abort", Qt::Key_Return, {}, 2},
      {"@&Skip|&Delete|de&Lete all|#&Abort", Qt::Key_L, {}, 3},
      {"#&No|&Yes", Qt::Key_Escape, {}, 1},
      {"&No|@&Yes|&Maybe", Qt::Key_Enter, {}, 2},
  };
  for (const Row& row : rows) {
    when_open("Way", [row](QWidget* window) {
      if (row.key == 0)
        window->close();
      else
        QTest::keyClick(window, static_cast<Qt::Key>(row.key), row.modifiers);
    });
    EXPECT_EQ(walert(nullptr, QStringLiteral("Way"), QStringLiteral("?"), row.buttons), row.answer)
        << row.buttons << " " << row.key;
  }
}

TEST(Message, KeysTypedIntoAnotherWindowDoNotAnswerAnAlertThatOpensUnderThem) {
  QLineEdit field;
  field.show();
  QTest::keyClick(&field, Qt::Key_S);
  int answer = 0;
  QWidget* alert = walert_open(nullptr, QStringLiteral("Under"), QStringLiteral("?"), "&Skip|&Abort",
                               [&](int number) { answer = number; });
  QTest::keyClick(alert, Qt::Key_S);
  QTest::keyClick(alert, Qt::Key_Return);
  QTest::qWait(150);
  EXPECT_EQ(answer, 0);
  EXPECT_EQ(field.text(), QStringLiteral("s"));
  QTest::qWait(400);
  QTest::keyClick(alert, Qt::Key_S);
  ASSERT_TRUE(QTest::qWaitFor([&] { return answer != 0; }));
  EXPECT_EQ(answer, 1);
}

TEST(Message, AlertsStandSideBySideAndEachAnswersOnce) {
  std::vector<int> answers(5, 0);
  std::vector<QWidget*> windows;
  for (int i = 0; i < 5; ++i)
    windows.push_back(walert_open(nullptr, QStringLiteral("Side"), QStringLiteral("Same text"),
                                  "&Skip|&Abort", [&answers, i](int number) { answers[i] += number; }));
  for (int i = 0; i < 5; ++i)
    for (int k = 0; k < i; ++k) EXPECT_NE(windows[i]->pos(), windows[k]->pos());
  QTest::mouseClick(windows[2]->findChild<QPushButton*>(QStringLiteral("alert_button_1")), Qt::LeftButton);
  EXPECT_EQ(answers, (std::vector<int>{0, 0, 1, 0, 0}));
  for (int i : {0, 1, 3}) windows[i]->close();
  delete windows[4];  // as when its owner goes
  EXPECT_EQ(answers, (std::vector<int>{2, 2, 1, 2, 2}));
}

TEST(Message, LongPathsAreShownWholeInAWindowThatFitsTheScreen) {
  const QString path = QStringLiteral("/") + QString(3000, QLatin1Char('W')) + QStringLiteral("/end");
  QWidget* alert = walert_open(nullptr, QStringLiteral("Long"), path, "&Close", [](int) {});
  EXPECT_LE(alert->width(), alert->screen()->availableGeometry().width());
  EXPECT_LE(alert->height(), alert->screen()->availableGeometry().height());
  auto* label = alert->findChild<QLabel*>(QStringLiteral("alert_message"));
  EXPECT_GE(label->height(), label->heightForWidth(label->width()));
  EXPECT_EQ(label->accessibleName(), path);
  alert->close();
}

TEST(Message, ReportsAreCutAtAWholeCharacter) {
  const QByteArray text = QByteArray("a") + QString(200, QChar(0xe4)).toUtf8();
  when_open("Cut", [&](QWidget* window) {
    QString shown = window->findChild<QLabel*>(QStringLiteral("alert_message"))->accessibleName();
    EXPECT_EQ(shown, QStringLiteral("a") + QString(127, QChar(0xe4)));
    QTest::keyClick(window, Qt::Key_C);
  });
  EXPECT_EQ(wreport(nullptr, "Cut", "%s", text.constData()), 1);
  QWidget pane;
  QLabel label(&pane);
  EXPECT_EQ(wprintf(&label, "%d of %d", 3, 5), 6);
  EXPECT_EQ(label.text(), QStringLiteral("3 of 5"));
  EXPECT_EQ(wprintf(nullptr, "x"), -1);
}

TEST(Message, BlockTakesEveryInputUntilTheLastRelease) {
  QMainWindow window;
  auto* field = new QLineEdit;
  window.setCentralWidget(field);
  auto* action = new QAction(&window);
  int triggered = 0;
  action->setShortcut(QKeySequence(Qt::Key_F5));
  QObject::connect(action, &QAction::triggered, [&] { ++triggered; });
  window.addAction(action);
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  field->setFocus();
  const auto type = [&] {
    QTest::keyClick(field, Qt::Key_X);
    QTest::keyClick(&window, Qt::Key_F5);
  };
  wblock(&window, 1);
  wblock(&window, 1);
  type();
  wblock(&window, 0);
  type();
  window.close();
  EXPECT_TRUE(window.isVisible());
  EXPECT_EQ(field->text(), QString());
  EXPECT_EQ(triggered, 0);
  wblock(&window, 0);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !window.isVisible(); }));  // the close is not forgotten
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  type();
  EXPECT_EQ(field->text(), QStringLiteral("x"));
  EXPECT_EQ(triggered, 1);
  misc_block(field, 1);
  EXPECT_FALSE(field->isEnabled());
  misc_block(field, 0);
  EXPECT_TRUE(field->isEnabled());
}

TEST(Message, CentringKeepsTheUnequalMargins) {
  const QRect visible(0, 30, 1000, 700);
  struct Row {
    QRect parent;
    QSize child;
    QPoint at;
  };
  const Row rows[] = {
      {{100, 100, 300, 200}, {300, 200}, {100, 100}}, {{100, 100, 301, 201}, {100, 100}, {200, 150}},
      {{100, 100, 100, 100}, {301, 201}, {0, 50}},     // -201 / 2 rounds towards zero
      {{900, 600, 200, 200}, {300, 200}, {675, 505}},  // ends 25 before the far edges
      {{0, 30, 100, 100}, {200, 200}, {10, 40}},       // 10 behind the near ones
      {{0, 0, 1000, 700}, {1200, 900}, {10, 40}},      // larger than the desktop: near edge wins
  };
  for (const Row& row : rows) EXPECT_EQ(wcenter_position(row.parent, row.child, visible), row.at);
}

TEST(Timers, CallbackMayStopOrChangeItsTimer) {
  QTimer timer;
  int calls = 0;
  wtimer_attach(&timer, 1, [&](QTimer* own) {
    if (++calls == 3) wtimer_detach(own);
  });
  wtimer_trigger(&timer);
  EXPECT_EQ(calls, 1);
  ASSERT_TRUE(QTest::qWaitFor([&] { return calls == 3; }));
  QTest::qWait(30);
  EXPECT_EQ(calls, 3);
  wtimer_attach(&timer, 1, [&](QTimer*) { calls = 100; });
  EXPECT_TRUE(QTest::qWaitFor([&] { return calls == 100; }));

  auto* short_lived = new QTimer;
  wtimer_attach(short_lived, 1, [&](QTimer* own) {
    calls = 0;
    delete own;
  });
  EXPECT_TRUE(QTest::qWaitFor([&] { return calls == 0; }));
}

TEST(Timers, IdleProcedureRunsUntilItHasFinished) {
  QWidget widget;
  int calls = 0;
  wproc_attach(&widget, [&] { return ++calls == 4; });
  ASSERT_TRUE(QTest::qWaitFor([&] { return calls == 4; }));
  QTest::qWait(10);
  EXPECT_EQ(calls, 4);
  wproc_attach(&widget, [&] { return ++calls, false; });
  ASSERT_TRUE(QTest::qWaitFor([&] { return calls > 6; }));
  wproc_detach(&widget);
  const int before = calls;
  QTest::qWait(10);
  EXPECT_EQ(calls, before);
}

TEST(Timers, FindsTheFirstChildOfAClassDepthFirst) {
  QWidget top;
  auto* box = new QWidget(&top);
  auto* deep = new QLineEdit(box);
  new QLineEdit(&top);
  EXPECT_EQ(wrecursive_find_child_class(&top, "QLineEdit"), deep);
  EXPECT_EQ(wrecursive_find_child_class(&top, "QWidget"), &top);
  EXPECT_EQ(wrecursive_find_child_class(&top, "QPushButton"), nullptr);
}

#include "core/toolkit/message.h"

#include <QLineEdit>
#include <QPushButton>

#include "core/toolkit/timers.h"
#include "tests/face/window_test.h"

namespace {
// Runs act on the window of that title once it takes keys.
void when_open(const char* title, const std::function<void(QWidget*)>& act) {
  auto* timer = new QTimer;
  QObject::connect(timer, &QTimer::timeout, timer, [=] {
    QWidget* window = QApplication::activeWindow();
    if (window == nullptr || window->windowTitle() != QLatin1String(title)) return;
    timer->stop();
    timer->deleteLater();
    act(window);
  });
  timer->start(1);
}
}  // namespace

TEST(Message, EveryWayOfAnsweringGivesItsButton) {
  const char* conflict = "&Skip|&Overwrite|Overwrite &All|a&Bort";
  const struct {
    const char* buttons;
    int key;  // 0: close the window
    Qt::KeyboardModifiers modifiers;
    int answer;
  } rows[] = {
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
  for (const auto& row : rows) {
    when_open("Way", [row](QWidget* window) {
      if (row.key == 0) window->close();
      // What an earlier test typed may still count as typing: press until the answer is taken.
      const QPointer<QWidget> open(window);
      while (open && open->isVisible()) {
        QTest::keyClick(window, static_cast<Qt::Key>(row.key), row.modifiers);
        QTest::qWait(10);
      }
    });
    EXPECT_EQ(walert(nullptr, QStringLiteral("Way"), QStringLiteral("?"), row.buttons), row.answer)
        << row.buttons << " " << row.key;
  }
}

TEST(Message, KeysTypedIntoAnotherWindowDoNotAnswerAnAlertThatOpensUnderThem) {
  QLineEdit field;
  field.show();
  int answer = 0;
  QWidget* alert = walert_open(nullptr, QStringLiteral("Under"), QStringLiteral("?"), "&Skip|&Abort",
                               [&](int number) { answer = number; });
  QTest::keyClick(&field, Qt::Key_S);
  QTest::keyClick(alert, Qt::Key_S);
  QTest::keyClick(alert, Qt::Key_Return);
  EXPECT_EQ(answer, 0);
  EXPECT_EQ(field.text(), QStringLiteral("s"));
  EXPECT_TRUE(wait_for([&] {
    if (answer == 0) QTest::keyClick(alert, Qt::Key_S);
    return answer == 1;
  }));
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

TEST(Message, LongTextsAreShownWholeInAWindowThatFitsAndReportsCutAtACharacter) {
  const QString path = QStringLiteral("/") + QString(3000, QLatin1Char('W')) + QStringLiteral("/end");
  QWidget* alert = walert_open(nullptr, QStringLiteral("Long"), path, "&Close", [](int) {});
  EXPECT_TRUE(alert->screen()->availableGeometry().contains(QRect(QPoint(), alert->size())));
  auto* label = alert->findChild<QLabel*>(QStringLiteral("alert_message"));
  EXPECT_GE(label->height(), label->heightForWidth(label->width()));
  EXPECT_EQ(label->accessibleName(), path);
  alert->close();
  const QByteArray text = QByteArray("aa") + QString(200, QChar(0xe4)).toUtf8();
  when_open("Cut", [&](QWidget* window) {
    EXPECT_EQ(window->accessibleDescription(), QStringLiteral("aa") + QString(126, QChar(0xe4)));
    window->close();
  });
  EXPECT_EQ(wreport(nullptr, "Cut", "%s", text.constData()), 1);
}

TEST(Message, BlockTakesEveryInputUntilTheLastRelease) {
  QMainWindow window;
  auto* field = new QLineEdit;
  window.setCentralWidget(field);
  QAction action;
  int triggered = 0;
  action.setShortcut(QKeySequence(Qt::Key_F5));
  QObject::connect(&action, &QAction::triggered, [&] { ++triggered; });
  window.addAction(&action);
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
  EXPECT_TRUE(wait_for([&] { return !window.isVisible(); }));  // the close is not forgotten
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  type();
  EXPECT_EQ(field->text(), QStringLiteral("x"));
  EXPECT_EQ(triggered, 1);
}

TEST(Message, CentringKeepsTheUnequalMargins) {
  const struct {
    QRect parent;
    QSize child;
    QPoint at;
  } rows[] = {
      {{100, 100, 301, 201}, {100, 100}, {200, 150}}, {{100, 100, 100, 100}, {301, 201}, {0, 50}},
      {{900, 600, 200, 200}, {300, 200}, {675, 505}},  // ends 25 before the far edges
      {{0, 30, 100, 100}, {200, 200}, {10, 40}},       // 10 behind the near ones
      {{0, 0, 1000, 700}, {1200, 900}, {10, 40}},      // larger than the desktop: near edge wins
  };
  for (const auto& row : rows)
    EXPECT_EQ(wcenter_position(row.parent, row.child, QRect(0, 30, 1000, 700)), row.at);
}

TEST(Timers, ACallbackMayStopOrDeleteItsTimerAndAnIdleProcedureEnds) {
  QTimer timer;
  int calls = 0, idle = 0, deleted = 0;
  wtimer_attach(&timer, 1, [&](QTimer* own) {
    if (++calls == 3) wtimer_detach(own);
  });
  wtimer_attach(new QTimer, 1, [&](QTimer* own) {
    ++deleted;
    delete own;
  });
  QWidget widget;
  wproc_attach(&widget, [&] { return ++idle == 4; });
  wtimer_trigger(&timer);
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(wait_for([&] { return calls == 3 && idle == 4 && deleted == 1; }));
  EXPECT_FALSE(timer.isActive());
}

#include "core/toolkit/message.h"

#include <QMenuBar>

#include "tests/face/window_test.h"

TEST(Message, EveryWayOfAnsweringGivesItsButton) {
  const std::string conflict = "&Skip|&Overwrite|Overwrite &All|a&Bort";
  // The answer to each key; "close" the window.
  const std::pair<std::string, const char*> rows[] = {
      {conflict, "Return = 1; Esc = 4; close = 4; O = 2; A = 3; Shift+B = 4; Alt+B = 4"},
      {"&Files|@&Links|#&Abort", "Return = 2"},
      {"@&Skip|&Delete|de&Lete all|#&Abort", "L = 3"},
      {"#&No|&Yes", "Esc = 1"},
      {"&No|@&Yes|&Maybe", "Enter = 2"}};
  for (const auto& [buttons, ways] : rows) {
    for (const auto& [way, number] : steps(ways)) {
      int given = 0;
      QPointer<QWidget> alert = walert_open(nullptr, QStringLiteral("Way"), QStringLiteral("?"),
                                            buttons.c_str(), [&given](int button) { given = button; });
      EXPECT_TRUE(WindowTest::activate(alert));
      if (way == "close") alert->close();
      answer(alert, way);
      EXPECT_EQ(given, std::stoi(number)) << buttons << " " << way;
    }
  }
}

TEST(Message, AlertsStandSideBySideAndEachAnswersOnce) {
  std::vector<int> answers(3, 0);
  std::vector<QWidget*> alerts;
  for (int& answer : answers)
    alerts.push_back(walert_open(nullptr, QStringLiteral("Side"), QStringLiteral("Same text"), "&Skip|&Abort",
                                 [&answer](int number) { answer += number; }));
  EXPECT_TRUE(alerts[0]->pos() != alerts[1]->pos() && alerts[0]->pos() != alerts[2]->pos());
  QTest::mouseClick(WindowTest::find<QPushButton>(alerts[1], "alert_button_1"), Qt::LeftButton);
  EXPECT_EQ(answers, (std::vector<int>{0, 1, 0}));
  alerts[0]->close();
  delete alerts[2];  // as when its owner goes
  EXPECT_EQ(answers, (std::vector<int>{2, 1, 2}));
}

TEST(Message, KeysTypedIntoAnotherWindowDoNotAnswerAnAlertThatOpensUnderThem) {
  QLineEdit field;
  field.show();
  int given = 0;
  QWidget* alert = walert_open(nullptr, QStringLiteral("Under"), QStringLiteral("?"), "&Skip|&Abort",
                               [&](int number) { given = number; });
  press("S", &field);
  press("S Return", alert);
  EXPECT_EQ(given, 0);
  EXPECT_EQ(field.text(), QStringLiteral("s"));
  answer(alert, "S");
  EXPECT_EQ(given, 1);
}

TEST(Message, ReportsAreCutAtAWholeCharacterAndALongOneFitsTheScreen) {
  QTimer::singleShot(50, [] {
    EXPECT_EQ(windows("Cut").value(0)->accessibleDescription(),
              QStringLiteral("aa") + QString(126, QChar(0xe4)));
    windows("Cut").value(0)->close();
  });
  const QByteArray text = QByteArray("aa") + QString(200, QChar(0xe4)).toUtf8();
  EXPECT_EQ(wreport(nullptr, "Cut", "%s", text.constData()), 1);
  const QString path = QLatin1Char('/') + QString(3000, QLatin1Char('W'));
  QWidget* alert = walert_open(nullptr, QStringLiteral("Long"), path, "&Close", [](int) {});
  EXPECT_TRUE(alert->screen()->availableGeometry().contains(QRect(QPoint(), alert->size())));
  alert->close();
}

TEST(Message, BlockTakesEveryInputUntilTheLastRelease) {
  QMainWindow window;
  auto* field = new QLineEdit;
  window.setCentralWidget(field);
  int triggered = 0;
  window.menuBar()->addAction(QStringLiteral("x"), Qt::Key_F5, [&] { ++triggered; });
  const auto type = [&] {
    window.show();
    EXPECT_TRUE(WindowTest::activate(&window));
    field->setFocus();
    press("X", field);
    press("F5", &window);
  };
  wblock(&window, 1);
  wblock(&window, 1);
  type();
  wblock(&window, 0);
  type();
  window.close();
  EXPECT_TRUE(window.isVisible());
  EXPECT_EQ(field->text().size() + triggered, 0);
  wblock(&window, 0);
  EXPECT_TRUE(wait_for([&] { return !window.isVisible(); }));  // the close is not forgotten
  type();
  EXPECT_EQ(field->text().size() + triggered, 2);
}

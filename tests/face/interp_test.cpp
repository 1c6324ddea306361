#include "core/interp.h"

#include "core/settings.h"
#include "tests/face/shown_window.h"

// Keys that also belong to menus must reach the name that is being typed first.
TEST(TypeAhead, FindsEchoesAndEditsInTheList) {
  ShownWindow window({"rebuild", "readme", "sub/", "zebra"});
  QTest::keyClicks(window.list(), QStringLiteral("rea"));
  EXPECT_EQ(window.status("status1"), "/rea");
  EXPECT_EQ(gDir.current, window.index_of("readme"));
  QTest::keyClick(window.list(), Qt::Key_Backspace);
  EXPECT_EQ(window.status("status1"), "/re");
  EXPECT_EQ(gDir.path, window.path()) << "Backspace edits while a name is typed";
  QTest::keyClick(window.list(), Qt::Key_Escape);
  EXPECT_EQ(window.status("status1"), "");
  QTest::keyClicks(window.list(), QStringLiteral("/sub"));
  QTest::keyClick(window.list(), Qt::Key_Return);
  EXPECT_EQ(gDir.path, window / "sub");
  QTest::keyClick(window.list(), Qt::Key_Backspace);
  EXPECT_EQ(gDir.path, window.path()) << "idle again, it goes up";
}

TEST(TypeAhead, APauseForgetsWhatWasTyped) {
  ShownWindow window({"ab", "b"});
  gConfig->type_ahead_ms = 100;
  QTest::keyClicks(window.list(), QStringLiteral("a"));
  EXPECT_EQ(window.status("status1"), "/a");
  EXPECT_TRUE(QTest::qWaitFor([&] { return window.status("status1") != "/a"; }));
  QTest::keyClicks(window.list(), QStringLiteral("b"));
  EXPECT_EQ(window.status("status1"), "/b");
  EXPECT_EQ(gDir.current, window.index_of("b"));
}

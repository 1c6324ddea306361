#include <gtest/gtest.h>

#include <QApplication>

TEST(Start, RunsOnTheOffscreenPlatform) {
  EXPECT_EQ(QApplication::platformName(), QStringLiteral("offscreen"));
}

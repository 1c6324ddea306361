#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 1);  // listing the tests must not need a display either
  testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}

#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

#include "platform/qt/desktop_qt.h"

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 1);  // listing the tests must not need a display either
  testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  desktop_qt_setup();
  return RUN_ALL_TESTS();
}

// What any Qt program pays before its first line of work: a main window with a menu bar and an empty tree
// view. bench/start compares zan's start to this one's.
#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QTreeView>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QMainWindow window;
  window.menuBar()->addMenu(QStringLiteral("&File"));
  window.setCentralWidget(new QTreeView);
  window.resize(600, 410);
  window.show();
  return QApplication::exec();
}

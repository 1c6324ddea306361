#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QMainWindow base;
  base.show();
  return QApplication::exec();
}

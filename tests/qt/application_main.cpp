// The test program's own main: the tests need an application object, on no display.
#include <gmock/gmock.h>

#include <QApplication>

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}

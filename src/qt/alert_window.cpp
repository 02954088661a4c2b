#include "qt/alert_window.h"

namespace kelmio {

AlertWindow::AlertWindow(QWidget* parent)
    : QFrame(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus) {
  setAttribute(Qt::WA_ShowWithoutActivating);
  setFrameShape(QFrame::StyledPanel);
}

void AlertWindow::showEvent(QShowEvent* event) {
  // A mere tool window is hidden by some desktops while its program is in the background. The toolkit takes the kind
  // over once the window has been made, and it is read when the window comes to the screen, which is after this.
  setAttribute(Qt::WA_X11NetWmWindowTypeNotification);
  QFrame::showEvent(event);
}

} // namespace kelmio

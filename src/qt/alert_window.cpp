#include "qt/alert_window.h"

namespace kelmio {

AlertWindow::AlertWindow(QWidget* parent)
    : QFrame(parent,
             Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus) {
  setAttribute(Qt::WA_ShowWithoutActivating);
  // A mere tool window is hidden by some desktops while its program is in the background.
  setAttribute(Qt::WA_X11NetWmWindowTypeNotification);
  setFrameShape(QFrame::StyledPanel);
}

} // namespace kelmio

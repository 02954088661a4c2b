// The window of an alert.
#pragma once

#include <QFrame>

namespace kelmio {

/// Without a frame of the desktop's, above the other windows, in no list of windows, never with the focus. Layouts are
/// drawn on it.
class AlertWindow : public QFrame {
public:
  explicit AlertWindow(QWidget* parent = nullptr);

protected:
  void showEvent(QShowEvent* event) override;
};

} // namespace kelmio

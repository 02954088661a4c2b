// The bond between a form and its window.
#pragma once

#include <QRect>
#include <QTimer>

#include <vector>

#include "controls/form.h"
#include "qt/control_binding.h"

namespace kelmio {

/// Caption, place, size and state go both ways; the size is that of the window's inside, the place that of its
/// frame. While the window is minimised or maximised the form keeps the place it would go back to.
/// A form that stands inside another window (a pane) has only its colour, which is a page's and not a window's. The
/// window must outlive the form's `Unload`, which may run from one of its events.
class FormBinding : public ControlBinding {
public:
  FormBinding(QWidget& window, Form& form);

protected:
  void Show() override;
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  void ShowPlace();
  void ShowState();
  void TakePlace();
  void TakeState();
  /// Whether the window closes.
  bool AskToClose();

  QWidget& window_;
  Form& form_;
  QTimer settle_;
  QRect known_; // the form's place as last given to the window or taken from it, in pixels
};

/// Brings the window and all its widgets up to date with the form at once, not first from the event loop.
void ShowFormNow(QWidget& window);

/// Whether windows can be placed and asked for their place.
bool PlacesWindows();

/// The widget that shows the form; nothing while there is none. For a form inside another window that is the pane.
QWidget* WindowOf(const Form& form);

/// Where a window may stand: as wanted while its title can be reached on one of the work areas, otherwise moved
/// into the nearest one. `areas` are in pixels, with the main screen first; with none the rectangle is returned.
QRect OnScreen(const QRect& wanted, const std::vector<QRect>& areas);

} // namespace kelmio

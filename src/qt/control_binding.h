// The bond between one control model and its widget.
#pragma once

#include <QObject>
#include <QWidget>

#include <functional>
#include <string_view>
#include <utility>

#include "controls/control.h"
#include "qt/handler_guard.h"
#include "qt/refresh.h"

namespace kelmio {

/// A child of the widget, so that it ends with it and leaves the model without a view. Changes of the model reach
/// the widget once a burst; what the widget tells goes to the model at once. Neither comes back as an echo.
class ControlBinding : public QObject {
public:
  ControlBinding(Control& model, QWidget& widget) : QObject(&widget), model_(model), refresh_([this] { ShowNow(); }) {
    model_.SetView([this] {
      if (!writing_)
        refresh_.Request();
    });
    model_.SetFocusTaker([&widget] { widget.setFocus(Qt::OtherFocusReason); });
  }
  ~ControlBinding() override {
    model_.SetView({});
    model_.SetFocusTaker({});
  }

  /// Brings the widget up to date at once.
  void ShowNow() {
    showing_ = true;
    RunHandler([this] { Show(); });
    showing_ = false;
    if (on_change)
      on_change();
  }
  void ShowIfPending() { refresh_.RunIfPending(); }

  /// Told after the widget followed its model or the model its widget.
  std::function<void()> on_change;
  /// Brings the whole form up to date at once, where changes wait to be shown.
  std::function<void()> show_form = [] {};
  /// Another control of the same form has changed.
  virtual void OtherChanged() {}

protected:
  /// Puts the model's state into the widget.
  virtual void Show() = 0;

  bool Showing() const { return showing_; }

  /// Carries a state from the widget to the model. While the model holds news that the widget doesn't show yet,
  /// the model is right and the widget's state is dropped. False then, and while the widget is being filled.
  template <class Handler> bool Write(Handler&& write) {
    if (showing_ || writing_ || refresh_.Pending())
      return false;
    writing_ = true;
    RunHandler(write);
    writing_ = false;
    if (on_change)
      on_change();
    return true;
  }

  void RequestShow() { refresh_.Request(); }

private:
  Control& model_;
  Refresh refresh_;
  bool showing_ = false;
  bool writing_ = false;
};

} // namespace kelmio

// Windows that wear the program's own frame.
#include <QEvent>
#include <QWindow>

#include "controls/jcForms.h"
#include "qt/bindings.h"
#include "qt/frame_widget.h"

namespace kelmio {

namespace {

class FrameBinding : public ControlBinding {
public:
  FrameBinding(FrameWidget& widget, jcForms& model)
      : ControlBinding(model, widget), widget_(widget), window_(*widget.window()), model_(model) {
    window_.setWindowFlag(Qt::FramelessWindowHint);
    window_.installEventFilter(this);
    widget.SetFrame(model);
    Cover();
  }

  void OtherChanged() override { widget_.LayOut(); }

protected:
  void Show() override {
    widget_.LayOut();
    ShowOnTop();
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == &window_)
      switch (event->type()) {
      case QEvent::Resize:
        Cover();
        break;
      case QEvent::Show:
      case QEvent::WindowStateChange:
        widget_.LayOut();
        ShowOnTop();
        break;
      case QEvent::WindowActivate:
      case QEvent::WindowDeactivate:
      case QEvent::WindowTitleChange:
        widget_.update();
        break;
      default:
        break;
      }
    return ControlBinding::eventFilter(watched, event);
  }

private:
  void Cover() {
    widget_.setGeometry(window_.rect());
    widget_.lower();
  }

  // The toolkit's own way would hide the window for a moment, which ends a modal one.
  void ShowOnTop() {
    if (QWindow* handle = window_.windowHandle())
      if (handle->flags().testFlag(Qt::WindowStaysOnTopHint) != model_.AlwaysOnTop())
        handle->setFlag(Qt::WindowStaysOnTopHint, model_.AlwaysOnTop());
  }

  FrameWidget& widget_;
  QWidget& window_;
  jcForms& model_;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, jcForms& frame) {
  auto* target = dynamic_cast<FrameWidget*>(&widget);
  return target != nullptr ? new FrameBinding(*target, frame) : nullptr;
}

} // namespace kelmio

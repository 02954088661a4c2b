// Sliders.
#include <QMouseEvent>

#include <algorithm>
#include <limits>

#include "controls/ucSlider.h"
#include "qt/bindings.h"
#include "qt/slider_widget.h"
#include "qt/units.h"

namespace kelmio {

namespace {

/// How many steps by key lead from one end to the other.
constexpr long kSmallSteps = 40;
constexpr long kLargeSteps = 10;

/// The shift keys as the model's events tell them.
constexpr int kShiftBit = 1;
constexpr int kControlBit = 2;
constexpr int kAltBit = 4;

int ToInt(long value) {
  return static_cast<int>(
      std::clamp<long>(value, std::numeric_limits<int>::min() / 2, std::numeric_limits<int>::max() / 2));
}

int ToShift(Qt::KeyboardModifiers keys) {
  return (keys.testFlag(Qt::ShiftModifier) ? kShiftBit : 0) | (keys.testFlag(Qt::ControlModifier) ? kControlBit : 0) |
         (keys.testFlag(Qt::AltModifier) ? kAltBit : 0);
}

ucSlider::MouseButton ToButton(Qt::MouseButton button) {
  if (button == Qt::LeftButton)
    return ucSlider::MouseButton::Left;
  return button == Qt::RightButton ? ucSlider::MouseButton::Right : ucSlider::MouseButton::Middle;
}

class SliderBinding : public ControlBinding {
public:
  SliderBinding(SliderWidget& widget, ucSlider& model) : ControlBinding(model, widget), widget_(widget), model_(model) {
    widget.on_layout = [this] { Layout(); };
    widget.on_press = [this](const QMouseEvent& event) {
      Tell([&] {
        model_.MouseDown(ToButton(event.button()), ToShift(event.modifiers()), event.pos().x(), event.pos().y());
      });
    };
    widget.on_move = [this](const QMouseEvent& event) {
      Tell([&] { model_.MouseMove(event.pos().x(), event.pos().y()); });
    };
    widget.on_release = [this](const QMouseEvent& event) {
      Tell([&] {
        model_.MouseUp(ToButton(event.button()), ToShift(event.modifiers()), event.pos().x(), event.pos().y());
      });
    };
    widget.on_step = [this](int value) {
      Tell([&] {
        if (model_.SetValue(value) == 0)
          model_.ThumbReleased(0);
      });
    };
  }

protected:
  void Show() override {
    const bool flat = model_.Orientation == ucSlider::Orientations::Horizontal;
    if (const auto wanted = flat ? Qt::Horizontal : Qt::Vertical; widget_.orientation() != wanted) {
      widget_.setOrientation(wanted);
      Layout();
    }
    widget_.setEnabled(model_.Enabled);
    widget_.SetFilled(model_.RailStyle == 0);
    ShowBackground();
    const long range = model_.Max() - model_.Min();
    widget_.setRange(ToInt(model_.Min()), ToInt(model_.Max()));
    widget_.setSingleStep(ToInt(std::max(1L, range / kSmallSteps)));
    widget_.setPageStep(ToInt(std::max(1L, range / kLargeSteps)));
    widget_.setValue(ToInt(model_.Value()));
    widget_.SetThumb(flat ? model_.ThumbLeft() : model_.ThumbTop());
    widget_.SetTip(model_.TipVisible() ? ToText(model_.TipText()) : QString());
  }

private:
  // The mouse is never dropped for news of the model: a drag that a playing message moves under is still a drag.
  template <class Handler> void Tell(Handler handler) {
    RunHandler(handler);
    RequestShow();
  }

  void Layout() {
    const QSize thumb = widget_.ThumbSize();
    Tell([&] { model_.Layout(widget_.width(), widget_.height(), thumb.width(), thumb.height()); });
  }

  // A negative number names one of the system's colours; all of them stand for the window's own.
  void ShowBackground() {
    const bool own = model_.BackColor >= 0;
    widget_.setAutoFillBackground(own);
    if (!own)
      return;
    QPalette palette;
    palette.setColor(QPalette::Window, ToColor(model_.BackColor));
    widget_.setPalette(palette);
  }

  SliderWidget& widget_;
  ucSlider& model_;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, ucSlider& slider) {
  auto* target = dynamic_cast<SliderWidget*>(&widget);
  return target != nullptr ? new SliderBinding(*target, slider) : nullptr;
}

} // namespace kelmio

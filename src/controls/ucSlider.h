// The program's own slider: a rail with a thumb that the mouse drags.
#pragma once

#include <functional>
#include <string>

#include "controls/basic_controls.h"
#include "controls/control.h"

namespace kelmio {

/// Error number of a value outside `Min` to `Max`.
inline constexpr int kInvalidPropertyValue = 380;

/// Values as the owner counts them; places and sizes in pixels of the view, which tells them by `Layout`. User
/// interface thread only.
class ucSlider : public Control {
public:
  enum class Orientations { Horizontal = 0, Vertical = 1 };
  enum class MouseButton { Left, Right, Middle };

  Property<Color> BackColor{*this, static_cast<Color>(0x8000000F)};
  Property<int> MousePointer{*this, 0};
  Property<std::string> MouseIcon{*this};
  Property<bool> Enabled{*this, true};
  Property<Orientations> Orientation{*this, Orientations::Vertical};
  Property<int> RailStyle{*this, 0};
  Property<bool> ShowValueTip{*this, true};
  Property<std::string> SliderImage{*this};
  Property<std::string> RailImage{*this};

  long Min() const { return min_; }
  long Max() const { return max_; }
  long Value() const { return value_; }
  void SetMin(long min);
  void SetMax(long max);
  /// 0, or `kInvalidPropertyValue` and no change. During a drag the thumb stays where the pointer holds it.
  int SetValue(long value);

  bool Dragging() const { return dragging_; }
  /// Whether the value tip is to be shown, and its text.
  bool TipVisible() const { return tip_visible_; }
  std::string TipText() const { return std::to_string(value_); }

  /// Left and top edge of the thumb.
  int ThumbLeft() const { return thumb_left_; }
  int ThumbTop() const { return thumb_top_; }

  // For the view.

  /// The sizes that hold from now on; the same ones again leave the thumb where it was dropped. A new orientation
  /// counts from the next call.
  void Layout(int width, int height, int thumb_width, int thumb_height);
  /// Places are those of the pointer within the control. `shift` is handed on to the events.
  void MouseDown(MouseButton button, int shift, int x, int y);
  void MouseMove(int x, int y);
  void MouseUp(MouseButton button, int shift, int x, int y);

  /// A left click within the control has ended. A click on the rail raises all three: grabbed, click, released.
  std::function<void()> Click = [] {};
  std::function<void(int shift)> ThumbGrabbed = [](int) {};
  std::function<void(int shift)> ThumbReleased = [](int) {};

private:
  struct Places {
    Orientations orientation = Orientations::Vertical;
    int width = 0;
    int height = 0;
    int thumb_width = 0;
    int thumb_height = 0;
    bool operator==(const Places&) const = default;
  };

  bool IsHorizontal() const { return places_.orientation == Orientations::Horizontal; }
  void RangeChanged();
  /// How far the thumb can go; 0 where it has no room.
  int Travel() const;
  void PlaceThumb();
  long ValueOfThumb() const;

  long min_ = 0;
  long max_ = 10;
  long range_ = 10;
  long value_ = 0;
  Places places_;
  int thumb_left_ = 0;
  int thumb_top_ = 0;
  int grab_x_ = 0; // from the thumb's left and top edge
  int grab_y_ = 0;
  bool dragging_ = false;
  bool tip_visible_ = false;
};

} // namespace kelmio

#include "controls/ucSlider.h"

#include <algorithm>
#include <cmath>

namespace kelmio {
namespace {

// A fraction is stored as the nearest whole number, ties to even.
long Nearest(double number) {
  return std::lrint(number);
}

bool Within(int place, int length) {
  return place >= 0 && place < length;
}

} // namespace

void ucSlider::SetMin(long min) {
  min_ = min;
  RangeChanged();
}

void ucSlider::SetMax(long max) {
  max_ = max;
  RangeChanged();
}

void ucSlider::RangeChanged() {
  range_ = max_ - min_;
  if (!dragging_)
    PlaceThumb();
  Changed();
}

int ucSlider::SetValue(long value) {
  if (value < min_ || value > max_)
    return kInvalidPropertyValue;
  if (value == value_)
    return 0;
  value_ = value;
  if (!dragging_)
    PlaceThumb();
  Changed();
  return 0;
}

void ucSlider::Layout(int width, int height, int thumb_width, int thumb_height) {
  const Places places{Orientation, width, height, thumb_width, thumb_height};
  if (places == places_)
    return;
  places_ = places;
  if (!dragging_)
    PlaceThumb();
}

void ucSlider::MouseDown(MouseButton button, int shift, int x, int y) {
  if (button != MouseButton::Left || !Enabled)
    return;
  dragging_ = true;
  const bool on_thumb = Within(x - thumb_left_, places_.thumb_width) && Within(y - thumb_top_, places_.thumb_height);
  grab_x_ = on_thumb ? x - thumb_left_ : places_.thumb_width / 2;
  grab_y_ = on_thumb ? y - thumb_top_ : places_.thumb_height / 2;
  if (!on_thumb)
    MouseMove(x, y);
  tip_visible_ = ShowValueTip;
  Changed();
  ThumbGrabbed(shift);
}

void ucSlider::MouseMove(int x, int y) {
  if (!dragging_)
    return;
  if (IsHorizontal())
    thumb_left_ = std::clamp(x - grab_x_, 0, Travel());
  else
    thumb_top_ = std::clamp(y - grab_y_, 0, Travel());
  SetValue(ValueOfThumb());
  Changed();
}

void ucSlider::MouseUp(MouseButton button, int shift, int x, int y) {
  if (!Enabled && !dragging_)
    return;
  if (button == MouseButton::Left && Within(x, places_.width) && Within(y, places_.height))
    Click();
  if (dragging_)
    ThumbReleased(shift);
  dragging_ = false;
  tip_visible_ = false;
  Changed();
}

int ucSlider::Travel() const {
  const int free = IsHorizontal() ? places_.width - places_.thumb_width : places_.height - places_.thumb_height;
  return std::max(free, 0);
}

void ucSlider::PlaceThumb() {
  const double share = range_ == 0 ? 0 : static_cast<double>(value_ - min_) / static_cast<double>(range_);
  // A value that a new range has left outside stands at the nearer end.
  const int way = static_cast<int>(Nearest(Travel() * std::clamp(share, 0.0, 1.0)));
  if (IsHorizontal()) {
    thumb_left_ = way;
    thumb_top_ = (places_.height - places_.thumb_height) / 2;
  } else {
    thumb_left_ = (places_.width - places_.thumb_width) / 2;
    thumb_top_ = Travel() - way; // the bottom end is `Min`
  }
}

long ucSlider::ValueOfThumb() const {
  const int travel = Travel();
  if (travel == 0)
    return min_;
  const int way = IsHorizontal() ? thumb_left_ : travel - thumb_top_;
  return Nearest(static_cast<double>(way) / travel * static_cast<double>(range_) + static_cast<double>(min_));
}

} // namespace kelmio

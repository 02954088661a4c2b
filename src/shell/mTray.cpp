#include "shell/mTray.h"

#include <cmath>

namespace kelmio::mTray {

ScreenRect GetTrayIconRect(const Tray& tray) {
  return tray.IconRect().value_or(ScreenRect{});
}

Middle MiddleOf(const ScreenRect& rect) {
  const auto between = [](int low, int high) { return static_cast<int>(std::lrint(low + (high - low) / 2.0)); };
  return {between(rect.left, rect.right), between(rect.top, rect.bottom)};
}

} // namespace kelmio::mTray

// Where the program's icon stands in the tray.
#pragma once

#include "platform/tray.h"

namespace kelmio::mTray {

/// The icon's rectangle; an empty one at 0, 0 when it isn't known.
ScreenRect GetTrayIconRect(const Tray& tray);

struct Middle {
  int x;
  int y;
};
/// The middle of a rectangle in whole pixels.
Middle MiddleOf(const ScreenRect& rect);

} // namespace kelmio::mTray

// Effects on windows, noted down.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "controls/form.h"
#include "platform/desktop.h"
#include "platform/window_surface.h"

namespace kelmio {

/// Every form has a window without a frame, which is on the screen while the form is visible.
class FakeWindowSurface : public WindowSurface {
public:
  std::optional<PixelRect> Frame(const Form& form) override {
    const int left = form.Left / kTwipsPerPixel;
    const int top = form.Top / kTwipsPerPixel;
    return PixelRect{left, top, left + form.Width / kTwipsPerPixel, top + form.Height / kTwipsPerPixel};
  }
  PixelSize ScreenSize() const override { return {1280, 1024}; }
  bool SetRegion(const Form& form, const PixelRect& region) override {
    if (available && form.Visible)
      regions.push_back(region);
    return available && form.Visible;
  }
  bool MakeLayered(const Form& form, int alpha) override {
    if (available && form.Visible)
      alphas.push_back(alpha);
    return available && form.Visible;
  }
  bool DrawFlight(const PixelRect& from, const PixelRect& to) override {
    if (available)
      flights.emplace_back(from, to);
    return available;
  }

  bool available = true; // false on a desktop that knows none of this
  std::vector<PixelRect> regions;
  std::vector<int> alphas;
  std::vector<std::pair<PixelRect, PixelRect>> flights; // from, to
};

} // namespace kelmio

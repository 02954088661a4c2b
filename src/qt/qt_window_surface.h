// Effects on the windows of forms.
#pragma once

#include "platform/window_surface.h"

namespace kelmio {

/// On Wayland, where a program knows nothing of the places of its windows, every request is refused.
class QtWindowSurface : public WindowSurface {
public:
  std::optional<PixelRect> Frame(const Form& form) override;
  PixelSize ScreenSize() const override;
  bool SetRegion(const Form& form, const PixelRect& region) override;
  bool MakeLayered(const Form& form, int alpha) override;
  bool DrawFlight(const PixelRect& from, const PixelRect& to) override;
};

} // namespace kelmio

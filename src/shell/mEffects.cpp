#include "shell/mEffects.h"

#include <cmath>

namespace kelmio::mEffects {

namespace {

/// To the nearest whole number, ties to even.
int Rounded(double value) {
  return static_cast<int>(std::nearbyint(value));
}

/// What is to be seen of a window of that size after `step` of `steps`.
PixelRect CenteredPart(const PixelSize& window, EffectMode mode, int step, int steps) {
  const auto length = [&](int whole) {
    const double part = static_cast<double>(whole) / steps * step;
    return Rounded(mode == EffectMode::Opening ? part : whole - part);
  };
  const auto half = [](int pixels) { return Rounded(pixels / 2.0); };
  const int width = length(window.width);
  const int height = length(window.height);
  return {half(window.width - width), half(window.height - height), half(width + window.width),
          half(height + window.height)};
}

} // namespace

bool AnimateToCorner(WindowSurface& surface, const Form* window, Corner corner, bool to_corner) {
  const auto frame = window != nullptr ? surface.Frame(*window) : std::nullopt;
  if (!frame)
    return false;
  const PixelSize screen = surface.ScreenSize();
  const bool right = corner == Corner::TopRight || corner == Corner::BottomRight;
  const bool bottom = corner == Corner::BottomLeft || corner == Corner::BottomRight;
  const int x = right ? screen.width - 1 : 0;
  const int y = bottom ? screen.height - 1 : 0;
  const PixelRect point{x, y, x + 1, y + 1};
  return to_corner ? surface.DrawFlight(*frame, point) : surface.DrawFlight(point, *frame);
}

void SetFormTransparency(WindowSurface& surface, const Form& form, int alpha) {
  surface.MakeLayered(form, alpha);
}

bool ShowWindowEffect(WindowSurface& surface, EventLoop& loop, Form& form, EffectMode mode, int effect, int speed,
                      int steps) {
  if (effect > kLastEffect)
    return true;
  form.Visible = true;
  const auto frame = surface.Frame(form);
  if (effect != kEffectCenter || !frame)
    return true;
  const PixelSize size{frame->Width(), frame->Height()};
  for (int step = 0; step <= steps; ++step) {
    // A window that closes inside its own effect must not come back.
    if (!form.Visible || !surface.SetRegion(form, CenteredPart(size, mode, step, steps)))
      return true;
    loop.RunPending();
    DelayMs(loop, speed);
  }
  return true;
}

void DelayMs(EventLoop& loop, int ms) {
  loop.RunFor(std::chrono::milliseconds(ms));
}

} // namespace kelmio::mEffects

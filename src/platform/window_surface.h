// What can be done to a window beyond what its form says: its visible part, its transparency, the flight of its
// caption.
#pragma once

#include <optional>

namespace kelmio {

class Form;

/// In pixels; `right` and `bottom` are the first ones outside.
struct PixelRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  bool operator==(const PixelRect&) const = default;
};

struct PixelSize {
  int width = 0;
  int height = 0;
};

/// User interface thread only. What a desktop can't do returns false and changes nothing.
class WindowSurface {
public:
  virtual ~WindowSurface() = default;
  /// Where the window stands on the screen with its frame, or would stand while it is hidden. The window is brought up
  /// to date with its form first. Nothing for a form without a window.
  virtual std::optional<PixelRect> Frame(const Form& form) = 0;
  /// Of the main screen.
  virtual PixelSize ScreenSize() const = 0;
  /// Shows only this part of the window, counted from the window's own corner; an empty one shows nothing of it.
  virtual bool SetRegion(const Form& form, const PixelRect& region) = 0;
  /// Makes a window that stands on the screen as opaque as `alpha` says, from 0 to 255, and lets clicks through to what
  /// lies below. It keeps its place and takes no focus.
  virtual bool MakeLayered(const Form& form, int alpha) = 0;
  /// Draws the outline of a window on its way from one place of the screen to another, in less than a fifth of a
  /// second, in which no events run.
  virtual bool DrawFlight(const PixelRect& from, const PixelRect& to) = 0;
};

} // namespace kelmio

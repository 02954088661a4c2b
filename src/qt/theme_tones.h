// The colours of the visual themes.
#pragma once

#include <QRgb>

namespace kelmio {

enum class Scheme { Light, Dark };

/// The few colours that all others come from. Gradients run from top to bottom.
struct Tones {
  // Windows and pages.
  QRgb window, base, row, text, faint, line, button;
  // The selection, and links.
  QRgb accent, on_accent, link;
  // Bars.
  QRgb bar_top, bar_bottom, bar_line;
  // What the pointer is over, and what is pressed.
  QRgb hot_top, hot_bottom, hot_line;
  // The heading over the list.
  QRgb head_top, head_bottom, head_text;
  // Roundness of buttons in pixels.
  int radius;
};

/// Numbers of the themes that have colours of their own; 3 is the desktop's.
inline constexpr int kFlatTheme = 0;
inline constexpr int kHighlightTheme = 1;
inline constexpr int kGradientTheme = 2;
inline constexpr int kDesktopTheme = 3;
inline constexpr int kSoftTheme = 4;

/// Variants of the gradient theme.
inline constexpr int kBlueVariant = 1;
inline constexpr int kOliveVariant = 2;
inline constexpr int kSilverVariant = 3;

/// The tones of a theme; an unknown number gives the gradient theme, an unknown variant its blue one.
const Tones& TonesOf(int theme, int variant, Scheme scheme);

} // namespace kelmio

// Colours and gradients of a window's drawn title bar, as data that a view paints.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "controls/basic_controls.h"

namespace kelmio {

/// Red, green and blue of 0 to 255 each.
constexpr Color RgbColor(int red, int green, int blue) {
  return red | green << 8 | blue << 16;
}

/// Both colours of a theme.
struct ColorPair {
  Color dark = 0;
  Color light = 0;
  bool operator==(const ColorPair&) const = default;
};

inline constexpr Color kWhite = RgbColor(255, 255, 255);

/// The pairs of the themes that have colours of their own, by number.
inline constexpr std::array<ColorPair, 5> kFrameThemes = {{
    {RgbColor(19, 97, 156), RgbColor(221, 236, 254)},
    {RgbColor(95, 95, 111), RgbColor(244, 244, 251)},
    {RgbColor(63, 93, 56), RgbColor(247, 249, 225)},
    {RgbColor(98, 107, 72), RgbColor(248, 248, 242)},
    {RgbColor(117, 91, 30), RgbColor(255, 239, 165)},
}};

/// Both colours mixed; `weight` of 0 to 255 is the share of the first.
Color Blend(Color first, Color second, int weight);
ColorPair Blend(const ColorPair& pair, Color second, int weight);

/// A place in a window, in pixels from its left and top edge.
struct FrameRect {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  bool operator==(const FrameRect&) const = default;
  bool Contains(int x, int y) const { return x >= left && x < left + width && y >= top && y < top + height; }
};

/// One gradient between two colours: from left to right, or from top to bottom.
struct GradientFill {
  enum class Direction { Horizontal, Vertical };
  FrameRect place;
  Color from = 0;
  Color to = 0;
  Direction direction = Direction::Vertical;
  bool operator==(const GradientFill&) const = default;
};

/// What fills `bar` in one of the six styles; an unknown number is taken as 0. One gradient, or two that share the bar.
std::vector<GradientFill> DrawTitleBar(int style, const FrameRect& bar, const ColorPair& colors);

/// The colour that the gradients leave at a place; white where there is none.
Color ColorAt(const std::vector<GradientFill>& fills, int x, int y);

/// Black or white: what reads better on the worst spot of `place`.
Color TextColorOn(const std::vector<GradientFill>& fills, const FrameRect& place);

/// How well two colours read on each other, from 1 to 21 (Web Content Accessibility Guidelines 2, contrast ratio).
double ColorContrast(Color one, Color other);

} // namespace kelmio

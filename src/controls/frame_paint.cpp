#include "controls/frame_paint.h"

#include <algorithm>
#include <cmath>

namespace kelmio {

namespace {

constexpr int kFull = 255;
/// Spots across and down at which a text's ground is looked at.
constexpr int kSpotsAcross = 8;
constexpr int kSpotsDown = 4;

int Part(Color color, int shift) {
  return (color >> shift) & kFull;
}

template <class Mix> Color ByParts(const Mix& mix) {
  return RgbColor(mix(0), mix(8), mix(16));
}

double Luminance(Color color) {
  const auto linear = [&](int shift) {
    const double part = Part(color, shift) / 255.0;
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(0) + 0.7152 * linear(8) + 0.0722 * linear(16);
}

double WorstContrast(Color text, const std::vector<GradientFill>& fills, const FrameRect& place) {
  double worst = 21;
  for (int across = 0; across <= kSpotsAcross; ++across)
    for (int down = 0; down <= kSpotsDown; ++down) {
      const int x = place.left + (place.width - 1) * across / kSpotsAcross;
      const int y = place.top + (place.height - 1) * down / kSpotsDown;
      worst = std::min(worst, ColorContrast(text, ColorAt(fills, x, y)));
    }
  return worst;
}

} // namespace

Color Blend(Color first, Color second, int weight) {
  return ByParts(
      [&](int shift) { return (Part(first, shift) * weight + Part(second, shift) * (kFull - weight)) / kFull; });
}

ColorPair Blend(const ColorPair& pair, Color second, int weight) {
  return {Blend(pair.dark, second, weight), Blend(pair.light, second, weight)};
}

std::vector<GradientFill> DrawTitleBar(int style, const FrameRect& bar, const ColorPair& colors) {
  using Direction = GradientFill::Direction;
  const auto [dark, light] = colors;
  FrameRect first = bar;
  FrameRect second = bar;
  const auto side_by_side = [&](int first_width) {
    first.width = first_width;
    second.left = bar.left + first_width;
    second.width = bar.width - first_width;
  };
  switch (style) {
  case 1: // a cylinder that is lit in the middle
    first.height = bar.height / 2;
    second.top = bar.top + first.height;
    second.height = bar.height - first.height;
    return {{first, dark, light, Direction::Vertical}, {second, light, dark, Direction::Vertical}};
  case 2:
    return {{bar, light, dark, Direction::Horizontal}};
  case 3:
    return {{bar, dark, light, Direction::Vertical}};
  case 4: // lit in the middle of the window
    side_by_side(bar.width / 2);
    return {{first, dark, light, Direction::Horizontal}, {second, light, dark, Direction::Horizontal}};
  case 5: // a shadow before the buttons
    side_by_side(bar.width * 3 / 4);
    return {{first, light, dark, Direction::Horizontal}, {second, dark, light, Direction::Horizontal}};
  default:
    return {{bar, light, dark, Direction::Vertical}};
  }
}

Color ColorAt(const std::vector<GradientFill>& fills, int x, int y) {
  for (const GradientFill& fill : fills) {
    if (!fill.place.Contains(x, y))
      continue;
    const bool flat = fill.direction == GradientFill::Direction::Horizontal;
    const int length = std::max(1, (flat ? fill.place.width : fill.place.height) - 1);
    const int way = flat ? x - fill.place.left : y - fill.place.top;
    return Blend(fill.to, fill.from, kFull * way / length);
  }
  return kWhite;
}

double ColorContrast(Color one, Color other) {
  const double first = Luminance(one);
  const double second = Luminance(other);
  return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

Color TextColorOn(const std::vector<GradientFill>& fills, const FrameRect& place) {
  return WorstContrast(kWhite, fills, place) > WorstContrast(0, fills, place) ? kWhite : 0;
}

} // namespace kelmio

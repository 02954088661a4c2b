#include "qt/colors.h"

#include <algorithm>
#include <cmath>

#include "qt/units.h"

namespace kelmio {

namespace {

/// Shade of every second row against an own background, as the factor that QColor takes, in percent.
constexpr int kRowShade = 104;
/// From this grey value on, black reads better than white.
constexpr int kBrightFrom = 140;
constexpr QRgb kLinkOnBright = 0xff1a4f96;
constexpr QRgb kLinkOnDark = 0xffa9d0ff;

/// A colour that the user has chosen stays as it is down to this contrast, which is that of red on white and a little
/// less.
constexpr double kLeastContrast = 3.5;

/// Relative luminance, from the sRGB values.
double Luminance(const QColor& color) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

} // namespace

double Contrast(const QColor& one, const QColor& other) {
  const double first = Luminance(one);
  const double second = Luminance(other);
  return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor TextColor(Color color, const QPalette& palette) {
  if (color == kDefaultTextColor)
    return palette.color(QPalette::Text);
  const QColor ground = palette.color(QPalette::Base);
  const double step = Luminance(ground) < 0.18 ? 0.05 : -0.05; // at this grey, black and white read alike
  QColor text = ToColor(color);
  while (Contrast(text, ground) < kLeastContrast) {
    const double lightness = text.lightnessF() + step;
    if (lightness < 0 || lightness > 1)
      return palette.color(QPalette::Text);
    text = QColor::fromHslF(std::max(text.hslHueF(), 0.0F), text.hslSaturationF(), static_cast<float>(lightness));
  }
  return text;
}

void SetBackColor(QWidget& widget, Color color) {
  if (color == kDefaultBackColor) {
    widget.setPalette(QPalette());
    return;
  }
  const QColor back = ToColor(color);
  const bool bright = qGray(back.rgb()) >= kBrightFrom;
  const QColor text = bright ? Qt::black : Qt::white;
  QPalette palette; // all that isn't set here follows the theme
  palette.setColor(QPalette::Base, back);
  palette.setColor(QPalette::AlternateBase, bright ? back.darker(kRowShade) : back.lighter(kRowShade));
  palette.setColor(QPalette::Text, text);
  palette.setColor(QPalette::WindowText, text);
  palette.setColor(QPalette::Link, bright ? kLinkOnBright : kLinkOnDark);
  widget.setPalette(palette);
}

} // namespace kelmio

#include "qt/colors.h"

#include "qt/units.h"

namespace kelmio {

namespace {

/// Shade of every second row against an own background, as the factor that QColor takes, in percent.
constexpr int kRowShade = 104;
/// From this grey value on, black reads better than white.
constexpr int kBrightFrom = 140;
constexpr QRgb kLinkOnBright = 0xff1a4f96;
constexpr QRgb kLinkOnDark = 0xffa9d0ff;

} // namespace

QColor TextColor(Color color, const QPalette& palette) {
  return color == kDefaultTextColor ? palette.color(QPalette::Text) : ToColor(color);
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

#include "qt/colors.h"

#include <QApplication>

#include "qt/units.h"

namespace kelmio {

namespace {

/// Shade of every second row against an own background, as the factor that QColor takes, in percent.
constexpr int kRowShade = 104;
/// From this grey value on, black reads better than white.
constexpr int kBrightFrom = 140;

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
  QPalette palette = QApplication::palette();
  palette.setColor(QPalette::Base, back);
  palette.setColor(QPalette::AlternateBase, bright ? back.darker(kRowShade) : back.lighter(kRowShade));
  palette.setColor(QPalette::Text, bright ? Qt::black : Qt::white);
  widget.setPalette(palette);
}

} // namespace kelmio

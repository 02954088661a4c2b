// Between the units of the models and those of the toolkit.
#pragma once

#include <QColor>
#include <QString>

#include <string_view>

#include "controls/basic_controls.h"
#include "core/text.h"
#include "platform/desktop.h"

namespace kelmio {

/// The nearest pixel; negative positions lie left of or above the first screen.
inline int ToPixels(int twips) {
  const int half = twips < 0 ? -kTwipsPerPixel / 2 : kTwipsPerPixel / 2;
  return (twips + half) / kTwipsPerPixel;
}
inline int ToTwips(int pixels) {
  return pixels * kTwipsPerPixel;
}

inline QColor ToColor(Color color) {
  return {color & 0xFF, (color >> 8) & 0xFF, (color >> 16) & 0xFF};
}

/// Stored bytes as the user reads them.
inline QString ToText(std::string_view bytes) {
  return QString::fromStdString(DisplayText(bytes));
}

} // namespace kelmio

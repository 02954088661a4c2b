// Colours of the models inside a light or dark palette.
#pragma once

#include <QPalette>
#include <QWidget>

#include "controls/basic_controls.h"

namespace kelmio {

/// The colours that a form has before the user picks any. They stand for the palette's own text and background,
/// so that a dark desktop stays readable.
inline constexpr Color kDefaultTextColor = 0;
inline constexpr Color kDefaultBackColor = 0xFFFFFF;

/// The text colour of a row: the palette's for the default, otherwise the model's own.
QColor TextColor(Color color, const QPalette& palette);

/// Gives the widget a background, with text that reads on it. The default gives the palette's own back.
void SetBackColor(QWidget& widget, Color color);

} // namespace kelmio

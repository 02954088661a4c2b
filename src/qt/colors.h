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

/// The text colour of a row: the palette's for the default, otherwise the model's own, made lighter or darker where it
/// couldn't be read on the palette's ground.
QColor TextColor(Color color, const QPalette& palette);

/// How well one colour reads on the other, from 1 to 21, as the Web Content Accessibility Guidelines 2 define it.
double Contrast(const QColor& one, const QColor& other);

/// Gives the widget a background, with text that reads on it. The default gives the palette's own back.
void SetBackColor(QWidget& widget, Color color);

} // namespace kelmio

// The look of all windows: style, palette, style sheet.
#pragma once

#include <QApplication>

#include "qt/theme_tones.h"

namespace kelmio {

/// Whether the desktop asks for light or dark windows. Before a look is applied.
Scheme DesktopScheme(const QApplication& application);

/// A look of our own colours.
void ApplyLook(QApplication& application, const Tones& tones);
/// The desktop's own style and colours; `style` is the name of the style that the application started with.
void ApplyDesktopLook(QApplication& application, const QString& style);

} // namespace kelmio

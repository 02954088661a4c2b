// The look of all windows: style, palette, style sheet.
#pragma once

#include <QApplication>

namespace kelmio {

enum class Scheme { Light, Dark };

/// Whether the desktop asks for light or dark windows. Before `ApplyLook`.
Scheme DesktopScheme(const QApplication& application);

void ApplyLook(QApplication& application, Scheme scheme);

} // namespace kelmio

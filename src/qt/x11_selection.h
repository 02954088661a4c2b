// Who serves the desktop's X11 screen.
#pragma once

#include <QByteArray>

#include <cstdint>

namespace kelmio {

/// The window that owns a selection of our screen, such as "_NET_SYSTEM_TRAY_S", to which the screen's number is added.
/// 0 for none, and where the desktop isn't X11.
std::uint32_t ScreenSelectionOwner(const QByteArray& name);

} // namespace kelmio

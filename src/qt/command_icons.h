// The program's own icons.
#pragma once

#include <QIcon>

namespace kelmio {

/// The icon of a command; an empty icon for a command that has none.
QIcon CommandIcon(int command);
QIcon ProgramIcon();

} // namespace kelmio

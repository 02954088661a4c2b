// The program's own icons.
#pragma once

#include <QIcon>

namespace kelmio {

/// The icon of a command; an empty icon for a command that has none.
QIcon CommandIcon(int command);
QIcon ProgramIcon();
/// The icon of a tree's node by its image number.
QIcon TreeIcon(int image);

/// Layouts name icons too, and must find them. Called once before the first of them is made; more calls do no harm.
void LoadIcons();

} // namespace kelmio

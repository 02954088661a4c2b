// Windows that no click stops at.
#pragma once

#include <QWidget>

namespace kelmio {

/// Lets clicks through the window, which stands on the screen, to what lies below it. False where there is no X11 that
/// can do that. The toolkit's own flag would do it too, but writes the kind of the window anew, and not all window
/// managers carry it over to the frame that they have put around the window.
bool LetClicksThrough(const QWidget& window);

} // namespace kelmio

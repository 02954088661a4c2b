// The outline of a window, flying over the screen.
#pragma once

#include <QRect>
#include <QRgb>

namespace kelmio {

/// Draws a frame with a caption in that colour on its way from one place to the other, both in the toolkit's pixels of
/// the screen. It blocks for less than a fifth of a second. False where there is no X11 screen of true colours.
bool DrawCaptionFlight(const QRect& from, const QRect& to, QRgb color);

} // namespace kelmio

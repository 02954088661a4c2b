// Where a balloon stands on the screen.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace kelmio {

/// Room at a place for a balloon, in pixels of the screen.
struct BalloonPlace {
  QRect window; // all of it
  QRect body;
  QPoint tip; // what it points at
  bool points = false;
};

/// Shape of the pointer: how far the body keeps away from what it points at, half the width at its root, and how far
/// the root keeps away from the body's corners.
inline constexpr int kPointerLength = 18;
inline constexpr int kPointerHalfWidth = 9;
inline constexpr int kPointerInset = 26;

/// The body of the given size over a point in the lower half of the screen, under one in the upper half, and always
/// inside `area`, the part of the screen that windows may use. Beside a centred one, it leans towards the middle of
/// the screen. `points` false leaves out the pointer.
BalloonPlace PlaceBalloon(const QSize& body, const QPoint& point, bool centered, bool points, const QRect& screen,
                          const QRect& area);
/// In the lower right corner, pointing at nothing.
BalloonPlace PlaceInCorner(const QSize& body, const QRect& area);

} // namespace kelmio

#include "qt/balloon_place.h"

#include <algorithm>

namespace kelmio {

namespace {

constexpr int kMargin = 6; // to the edges of the area
constexpr int kCornerMargin = 14;

/// A stretch inside another one, at its start when it is too long for it.
int Inside(int start, int length, int low, int high) {
  return std::max(std::min(start, high - length), low);
}

} // namespace

BalloonPlace PlaceBalloon(const QSize& body, const QPoint& point, bool centered, bool points, const QRect& screen,
                          const QRect& area) {
  const QRect room = area.adjusted(kMargin, kMargin, -kMargin, -kMargin);
  const QPoint middle = screen.center();
  int left = point.x() - body.width() / 2;
  if (!centered)
    left = point.x() > middle.x() ? point.x() + kPointerInset - body.width() : point.x() - kPointerInset;
  const int top = point.y() > middle.y() ? point.y() - kPointerLength - body.height() : point.y() + kPointerLength;

  BalloonPlace place;
  place.body = QRect(QPoint(Inside(left, body.width(), room.left(), room.left() + room.width()),
                            Inside(top, body.height(), room.top(), room.top() + room.height())),
                     body);
  place.tip = point;
  const bool is_over_or_under = point.y() < place.body.top() || point.y() > place.body.bottom();
  place.points = points && is_over_or_under;
  place.window = place.points ? place.body.united(QRect(point, QSize(1, 1))) : place.body;
  return place;
}

BalloonPlace PlaceInCorner(const QSize& body, const QRect& area) {
  BalloonPlace place;
  place.body = QRect(QPoint(area.x() + area.width() - kCornerMargin - body.width(),
                            area.y() + area.height() - kCornerMargin - body.height()),
                     body);
  place.window = place.body;
  return place;
}

} // namespace kelmio

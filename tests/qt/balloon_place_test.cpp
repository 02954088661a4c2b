#include <gtest/gtest.h>

#include "qt/balloon_place.h"

namespace kelmio {
namespace {

TEST(BalloonPlaceTest, PointsAtItsPlaceFromInsideTheWorkArea) {
  const QRect screen(0, 0, 1280, 800);
  const QRect area(0, 30, 1280, 740); // bars above and below
  const QSize body(200, 60);
  const struct {
    QPoint point;
    bool centered;
    bool above;
    int left;
  } rows[] = {
      {{1200, 785}, false, true, 1026},                                   // leans towards the middle of the screen
      {{60, 785}, false, true, 34},     {{1275, 785}, false, true, 1074}, // not over the edge
      {{2, 15}, false, false, 6},       {{640, 785}, true, true, 540},
  };
  for (const auto& row : rows) {
    const BalloonPlace place = PlaceBalloon(body, row.point, row.centered, true, screen, area);
    EXPECT_TRUE(area.contains(place.body)) << row.point.x();
    EXPECT_EQ(place.body.left(), row.left) << row.point.x();
    EXPECT_EQ(place.body.bottom() < row.point.y(), row.above) << row.point.x();
    EXPECT_TRUE(place.points);
    EXPECT_TRUE(place.window.contains(place.body) && place.window.contains(row.point));
  }
  EXPECT_FALSE(PlaceBalloon({200, 2000}, {100, 400}, false, true, screen, area).points) << "it lies over its place";
  EXPECT_TRUE(area.contains(PlaceInCorner(body, area).body));
}

} // namespace
} // namespace kelmio

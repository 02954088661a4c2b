// How the ends of messages are found, over some messages of the corpus; `detection_bench` has thousands.
#include <gtest/gtest.h>

#include "detection/measure.h"

namespace kelmio {
namespace {

using bench::Figures;

TEST(Detection, NoMessageIsCutAndEachEndsSoonAfterItsCallerHangsUp) {
  constexpr unsigned kMessages = 60; // without speech there is no corpus, and this throws
  const Figures figures = bench::Measure(0, kMessages);
  EXPECT_EQ(figures.all.messages, kMessages);
  EXPECT_LT(figures.all.FalseStopShare(), Figures::kMostFalseStops) << figures.faults;
  EXPECT_GE(figures.all.InTimeShare(), Figures::kLeastInTime) << figures.faults;
  for (const Figures::Row& row : figures.endings)
    EXPECT_GT(row.messages, 0U);
  for (const Figures::Row& row : figures.contents)
    EXPECT_GT(row.messages, 0U);
}

} // namespace
} // namespace kelmio

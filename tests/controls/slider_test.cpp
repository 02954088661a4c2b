#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "controls/ucSlider.h"

namespace kelmio {
namespace {

using testing::ElementsAre;
using Button = ucSlider::MouseButton;

// A rail of 110 with a thumb of 10: a hundred places for the values 0 to 1000.
struct Slider : ucSlider {
  explicit Slider(Orientations orientation = Orientations::Horizontal) {
    Orientation = orientation;
    SetMax(1000);
    if (orientation == Orientations::Horizontal)
      Layout(110, 20, 10, 16);
    else
      Layout(20, 110, 16, 10);
    ThumbGrabbed = [this](int shift) { Tell("grabbed", shift); };
    Click = [this] { Tell("click", 0); };
    ThumbReleased = [this](int shift) { Tell("released", shift); };
  }
  void Tell(const std::string& event, int shift) {
    told.push_back(event + " " + std::to_string(Value()) + (shift != 0 ? " shifted" : ""));
  }
  std::vector<std::string> told;
};

TEST(Slider, AClickOnTheRailBringsTheThumbUnderThePointer) {
  Slider slider;
  slider.MouseDown(Button::Left, 1, 55, 10);
  EXPECT_TRUE(slider.Dragging());
  EXPECT_TRUE(slider.TipVisible());
  EXPECT_EQ(slider.TipText(), "500");
  slider.MouseUp(Button::Left, 0, 55, 10);
  EXPECT_THAT(slider.told, ElementsAre("grabbed 500 shifted", "click 500", "released 500"));
  EXPECT_EQ(slider.ThumbLeft(), 50);
  EXPECT_FALSE(slider.Dragging());
  EXPECT_FALSE(slider.TipVisible());
}

TEST(Slider, ADragHoldsTheThumbWhereItWasTakenAndEndsAtTheRailsEnds) {
  Slider slider;
  slider.SetValue(500);
  slider.MouseDown(Button::Left, 0, 58, 10); // 8 from its left edge
  EXPECT_EQ(slider.Value(), 500);
  slider.MouseMove(59, 10);
  EXPECT_EQ(slider.Value(), 510);
  slider.MouseMove(1000, -50);
  EXPECT_EQ(slider.Value(), 1000);
  EXPECT_EQ(slider.ThumbLeft(), 100);
  slider.MouseMove(-1000, 500);
  EXPECT_EQ(slider.Value(), 0);
  EXPECT_EQ(slider.ThumbLeft(), 0);
  slider.MouseUp(Button::Left, 0, -1000, 10);
  EXPECT_THAT(slider.told, ElementsAre("grabbed 500", "released 0")) << "no click outside the control";
}

TEST(Slider, AValueGivenDuringADragLeavesTheThumbToThePointer) {
  Slider slider;
  slider.MouseDown(Button::Left, 0, 55, 10);
  EXPECT_EQ(slider.SetValue(900), 0);
  EXPECT_EQ(slider.Value(), 900);
  slider.SetMax(2000);
  slider.Layout(110, 21, 10, 16);
  EXPECT_EQ(slider.ThumbLeft(), 50);
  slider.MouseUp(Button::Left, 0, 55, 10);
  slider.SetValue(1000);
  EXPECT_EQ(slider.ThumbLeft(), 50);
  slider.SetValue(2000);
  EXPECT_EQ(slider.ThumbLeft(), 100);
}

TEST(Slider, TheBottomOfAVerticalOneIsItsLeastValue) {
  Slider slider(ucSlider::Orientations::Vertical);
  EXPECT_EQ(slider.ThumbTop(), 100);
  slider.SetValue(1000);
  EXPECT_EQ(slider.ThumbTop(), 0);
  slider.MouseDown(Button::Left, 0, 10, 85);
  EXPECT_EQ(slider.Value(), 200);
}

TEST(Slider, RefusesAValueOutsideItsRange) {
  Slider slider;
  slider.SetMin(-5);
  EXPECT_EQ(slider.SetValue(-6), 380);
  EXPECT_EQ(slider.SetValue(1001), 380);
  EXPECT_EQ(slider.Value(), 0);
  EXPECT_EQ(slider.SetValue(-5), 0);
  EXPECT_EQ(slider.SetValue(1000), 0);
  EXPECT_EQ(slider.ThumbLeft(), 100);
}

TEST(Slider, StoresTheNearestWholeNumber) {
  Slider slider;
  slider.SetMax(5);
  slider.Layout(20, 20, 10, 10); // ten places for five steps
  std::vector<long> values;
  slider.MouseDown(Button::Left, 0, 5, 10);
  for (int place = 0; place <= 10; ++place) {
    slider.MouseMove(place + 5, 10);
    values.push_back(slider.Value());
  }
  EXPECT_THAT(values, ElementsAre(0, 0, 1, 2, 2, 2, 3, 4, 4, 4, 5)) << "halves go to the even neighbour";
}

TEST(Slider, LeavesTheThumbWhereItWasDroppedUntilTheValueOrTheSizeChanges) {
  Slider slider;
  slider.SetMax(4); // far fewer values than places
  slider.MouseDown(Button::Left, 0, 35, 10);
  slider.MouseUp(Button::Left, 0, 35, 10);
  EXPECT_EQ(slider.Value(), 1);
  slider.SetValue(1);
  slider.Layout(110, 20, 10, 16);
  EXPECT_EQ(slider.ThumbLeft(), 30);
  slider.Layout(210, 20, 10, 16);
  EXPECT_EQ(slider.ThumbLeft(), 50);
}

TEST(Slider, IgnoresTheMouseWhenDisabledAndOtherButtonsAlways) {
  Slider slider;
  slider.MouseDown(Button::Right, 0, 55, 10);
  slider.MouseUp(Button::Right, 0, 55, 10);
  slider.Enabled = false;
  slider.MouseDown(Button::Left, 0, 55, 10);
  slider.MouseMove(70, 10);
  slider.MouseUp(Button::Left, 0, 55, 10);
  EXPECT_THAT(slider.told, ElementsAre());
  EXPECT_EQ(slider.Value(), 0);
}

TEST(Slider, StandsAtItsLeastValueWhereThereIsNoRoomOrNoRange) {
  Slider slider;
  for (const int width : {0, 5, 10}) {
    slider.Layout(width, 0, 10, 10);
    slider.MouseDown(Button::Left, 0, 3, 0);
    slider.MouseMove(400, 0);
    slider.MouseUp(Button::Left, 0, 400, 0);
    EXPECT_EQ(slider.Value(), 0);
    EXPECT_EQ(slider.ThumbLeft(), 0);
  }
  slider.Layout(110, 20, 10, 10);
  slider.SetMax(0);
  slider.MouseDown(Button::Left, 0, 55, 10);
  EXPECT_EQ(slider.Value(), 0);
  EXPECT_EQ(slider.ThumbLeft(), 50);
}

} // namespace
} // namespace kelmio

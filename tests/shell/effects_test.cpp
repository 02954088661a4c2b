#include "shell/mEffects.h"

#include <gmock/gmock.h>

#include "fakes/fake_loop.h"
#include "fakes/fake_window_surface.h"
#include "support/desk.h"

namespace kelmio {

void PrintTo(const PixelRect& rect, std::ostream* out) {
  *out << '(' << rect.left << ' ' << rect.top << ' ' << rect.right << ' ' << rect.bottom << ')';
}

namespace test {
namespace {

using namespace mEffects;
using ::testing::ElementsAre;

class Window : public Form {
public:
  Window(int width, int height) {
    Left = 100 * kTwipsPerPixel;
    Top = 50 * kTwipsPerPixel;
    Width = width * kTwipsPerPixel;
    Height = height * kTwipsPerPixel;
  }
  void VisitControls(ControlVisitor& /*visitor*/) override {}
};

struct Stage {
  FakeLoop loop;
  FakeWindowSurface surface;
  Window window{10, 5};

  bool Show(EffectMode mode, int effect, int steps) {
    return ShowWindowEffect(surface, loop, window, mode, effect, 5, steps);
  }
};

// Worked out by hand: of 10 by 5 in 4 steps, 2.5 and 1.25 a step, every half goes to the even number.
TEST(Effects, GrowOutOfTheCentreAndShrinkBackToThePixel) {
  const PixelRect none{5, 2, 5, 2};
  const PixelRect whole{0, 0, 10, 5};
  Stage stage;
  EXPECT_TRUE(stage.Show(EffectMode::Opening, 10, 4));
  EXPECT_TRUE(stage.window.Visible);
  EXPECT_THAT(stage.surface.regions,
              ElementsAre(none, PixelRect{4, 2, 6, 3}, PixelRect{2, 2, 8, 4}, PixelRect{1, 0, 9, 4}, whole));
  stage.surface.regions.clear();
  stage.Show(EffectMode::Closing, 10, 4);
  EXPECT_THAT(stage.surface.regions,
              ElementsAre(whole, PixelRect{1, 0, 9, 4}, PixelRect{2, 2, 8, 4}, PixelRect{4, 2, 6, 3}, none));
}

TEST(Effects, LetEventsRunBetweenTheSteps) {
  Stage stage;
  std::vector<std::size_t> seen;
  stage.loop.Start(std::chrono::milliseconds(10), [&] { seen.push_back(stage.surface.regions.size()); });
  stage.Show(EffectMode::Opening, 10, 4);
  EXPECT_THAT(seen, ElementsAre(2, 4)) << "each step takes five milliseconds, the last one too";
}

TEST(Effects, EndWithTheirWindow) {
  Stage stage;
  stage.loop.Start(std::chrono::milliseconds(7), [&] { stage.window.Visible = false; });
  EXPECT_TRUE(stage.Show(EffectMode::Opening, 10, 4));
  EXPECT_EQ(stage.surface.regions.size(), 2U);
  EXPECT_FALSE(stage.window.Visible);
}

TEST(Effects, TakeTheMainWindowIntoTheCornerAndOutOfIt) {
  Desk desk;
  desk.Start();
  desk.form.Visible = true;
  desk.form.ExecuteCommand(command::kHide);
  desk.form.ExecuteCommand(command::kHide);
  desk.form.ExecuteCommand(command::kShowWindow);
  desk.form.ExecuteCommand(command::kShowWindow);
  EXPECT_TRUE(desk.form.Visible);
  const PixelRect corner{1279, 1023, 1280, 1024};
  ASSERT_EQ(desk.surface.flights.size(), 2U) << "where there is something to see";
  EXPECT_EQ(desk.surface.flights[0].second, corner);
  EXPECT_EQ(desk.surface.flights[1].first, corner);
}

} // namespace
} // namespace test
} // namespace kelmio

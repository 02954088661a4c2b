#include <gmock/gmock.h>

#include <QTest>

#include "qt/binder.h"
#include "qt/form_binding.h"
#include "test_form.h"

namespace kelmio {
namespace {

class WindowTest : public testing::Test {
protected:
  WindowTest() {
    form_.Caption = "Kelmio Standard";
    form_.Left = 1000;
    form_.Top = 1000;
    form_.Width = 6000;
    form_.Height = 6000;
    Bind(window_, form_);
    form_.Visible = true;
    Settle();
  }

  TestForm form_;
  TestWindow window_;
};

TEST_F(WindowTest, PlacesItselfInTwipsAndDoesNotDrift) {
  EXPECT_EQ(window_.pos(), QPoint(67, 67));
  EXPECT_EQ(window_.size(), QSize(400, 400));
  window_.resize(450, 400);
  ASSERT_TRUE(WaitFor([&] { return form_.Width == 6750; }));
  EXPECT_EQ(form_.Left, 1000) << "an unmoved edge keeps twips that are no whole pixels";
  EXPECT_EQ(form_.Height, 6000);
  form_.Caption = "Kelmio";
  Settle();
  EXPECT_EQ(window_.size(), QSize(450, 400)) << "the user's own";
  window_.resize(500, 400);
  window_.close();
  EXPECT_EQ(form_.Width, 7500) << "though it was resized just before the end";
}

TEST_F(WindowTest, MinimisingKeepsThePlaceAndTellsTheState) {
  window_.showMinimized();
  Settle();
  EXPECT_EQ(form_.State, WindowState::Minimized);
  EXPECT_EQ(form_.Width, 6000);
  form_.State = WindowState::Normal;
  Settle();
  EXPECT_FALSE(window_.isMinimized());
}

TEST_F(WindowTest, TheCloseBoxAsksTheForm) {
  form_.stays = true;
  EXPECT_FALSE(window_.close());
  EXPECT_TRUE(window_.isVisible());
  EXPECT_EQ(form_.unloads, 0);
  form_.stays = false;
  EXPECT_TRUE(window_.close());
  EXPECT_EQ(form_.unloads, 1);
  EXPECT_FALSE(form_.Visible);
}

TEST(OnScreenTest, BringsALostWindowIntoTheNearestWorkArea) {
  const std::vector<QRect> areas = {{0, 0, 1000, 700}, {1000, 0, 800, 600}};
  const QRect seen(900, 100, 779, 539);
  EXPECT_EQ(OnScreen(seen, areas), seen);
  EXPECT_EQ(OnScreen({5000, 100, 400, 300}, areas), QRect(1400, 100, 400, 300));
  EXPECT_EQ(OnScreen({-3000, -3000, 400, 300}, areas), QRect(0, 0, 400, 300));
  EXPECT_EQ(OnScreen({200, -20, 400, 300}, areas), QRect(200, 0, 400, 300)) << "the title is out of reach";
  EXPECT_EQ(OnScreen({9000, 9000, 2000, 2000}, areas).size(), QSize(800, 600));
  EXPECT_EQ(OnScreen(seen, {}), seen);
}

} // namespace
} // namespace kelmio

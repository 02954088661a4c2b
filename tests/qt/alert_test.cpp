// The real alerts in the toolkit's windows.
#include <gmock/gmock.h>

#include <QWidget>

#include "platform/desktop.h"
#include "qt/binder.h"
#include "qt/form_binding.h"
#include "qt/form_factory.h"
#include "qt/qt_event_loop.h"
#include "qt/qt_window_surface.h"
#include "qt/qt_windows.h"
#include "shell/frmPopup.h"
#include "test_form.h"

namespace kelmio {
namespace {

class AlertTest : public testing::Test {
protected:
  AlertTest() {
    app_.ScreenWidth = 800 * kTwipsPerPixel;
    app_.ScreenHeight = 600 * kTwipsPerPixel;
    settings_.NewCallAlertTime = 60000;
    settings_.Transparency = 240;
  }
  frmPopup::House House() { return {app_, settings_, loop_, timers_, windows_, surface_}; }

  AppState app_;
  Settings settings_;
  QtEventLoop loop_;
  QtTimerService timers_;
  QtWindowSurface surface_;
  QtWindows windows_;
};

TEST_F(AlertTest, EveryControlHasItsWidget) {
  frmPopup plain(House());
  frmPopupPhoto with_photo(House(), "");
  for (frmPopup* form : {&plain, static_cast<frmPopup*>(&with_photo)}) {
    const auto layout = MakeLayout(form->Name());
    ASSERT_NE(layout, nullptr);
    EXPECT_THAT(Bind(*layout, *form), testing::IsEmpty());
  }
}

TEST_F(AlertTest, OpensWholeInItsPlace) {
  const auto alert = std::make_shared<frmPopup>(House());
  alert->ShowCall("A name that is far too long to stand in one line of the alert's window", "030");
  QWidget* window = WindowOf(*alert);
  ASSERT_NE(window, nullptr);
  EXPECT_TRUE(window->isVisible());
  EXPECT_EQ(window->size(), QSize(alert->Width / kTwipsPerPixel, alert->Height / kTwipsPerPixel));
  EXPECT_EQ(window->mask(), QRegion(window->rect()));
  EXPECT_NEAR(window->windowOpacity(), 240 / 255.0, 0.01);
  EXPECT_LE(surface_.Frame(*alert)->right, 800);

  EXPECT_TRUE(surface_.SetRegion(*alert, {}));
  EXPECT_FALSE(window->mask().isEmpty()) << "the toolkit would take that for no mask";
  EXPECT_FALSE(window->mask().intersects(window->rect()));
}

TEST_F(AlertTest, ClosesInsideItsOwnOpeningEffect) {
  settings_.NewCallAlertTime = 6;
  const auto alert = std::make_shared<frmPopup>(House());
  alert->ShowCall("Max", "030");
  EXPECT_FALSE(alert->Visible);
  ASSERT_TRUE(WaitFor([&] { return WindowOf(*alert) == nullptr && alert.use_count() == 1; }));
  EXPECT_FALSE(surface_.SetRegion(*alert, {0, 0, 5, 5}));
  EXPECT_FALSE(surface_.MakeLayered(*alert, 100));
}

TEST_F(AlertTest, CopesWithAWindowThatIsTakenAwayInAnEffect) {
  for (const int alert_time : {6, 60000}) {
    settings_.NewCallAlertTime = alert_time;
    std::weak_ptr<frmPopup> held;
    {
      const auto alert = std::make_shared<frmPopup>(House());
      held = alert;
      const auto end = timers_.Start(std::chrono::milliseconds(30), [&] { windows_.CloseAll(); });
      alert->ShowCall("Max", "030");
      timers_.Stop(end);
      EXPECT_EQ(WindowOf(*alert), nullptr);
    }
    Settle();
    EXPECT_TRUE(held.expired());
  }
}

} // namespace
} // namespace kelmio

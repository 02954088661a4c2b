#include <gmock/gmock.h>

#include <stdexcept>

#include "core/date_time.h"
#include "fakes/fake_loop.h"
#include "fakes/fake_tray.h"
#include "shell/cToolTipOnDemand.h"
#include "shell/cTrayIcon.h"
#include "shell/command_table.h"
#include "shell/mTray.h"
#include "support/desk.h"

namespace kelmio::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TrayIconTest : public testing::Test {
protected:
  TrayIconTest() {
    icon.TrayMouseEvent = [this](std::uint32_t message) { Told("mouse", message); };
    icon.TrayKeyEvent = [this](std::uint32_t message) { Told("key", message); };
    icon.TrayBalloonEvent = [this](std::uint32_t message) { Told("balloon", message); };
    icon.TrayIconMoved = [this](int x, int y) {
      told.push_back("moved " + std::to_string(x) + " " + std::to_string(y));
    };
    icon.TaskBarRecreated = [this] { told.emplace_back("recreated"); };
  }
  void Told(const std::string& event, std::uint32_t message) { told.push_back(event + " " + std::to_string(message)); }
  void Wait(int milliseconds) { loop.Advance(std::chrono::milliseconds(milliseconds)); }

  FakeLoop loop;
  LocalWindows windows{loop};
  MSubclass subclass{windows};
  FakeTray tray;
  std::vector<std::string> told;
  WindowHandle owner = windows.Create([this](WindowHandle, std::uint32_t message, MessageWord, MessageWord) {
    told.push_back("old " + std::to_string(message));
    return MessageResult{5};
  });
  cTrayIcon icon{tray, windows, subclass};
};

TEST_F(TrayIconTest, EachMessageGoesWhereItBelongs) {
  icon.Create(owner, kProgramIcon, "tip");
  const struct {
    std::uint32_t message;
    MessageWord word;
    MessageWord long_word;
    std::vector<std::string> told;
    MessageResult result;
    bool stops; // the timer of the balloon
  } rows[] = {
      {1025, 999, 1024, {"key 1024"}, 0, false},     {1025, 999, 1025, {"key 1025"}, 0, false},
      {1025, 999, 1026, {"balloon 1026"}, 0, false}, {1025, 999, 1027, {"balloon 1027"}, 0, false},
      {1025, 999, 1028, {"balloon 1028"}, 0, true},  {1025, 999, 1029, {"balloon 1029"}, 0, true},
      {1025, 999, 1030, {"old 1025"}, 5, false},     {1025, 999, 512, {"old 1025"}, 5, false},
      {1025, 999, 513, {"mouse 513"}, 0, true},      {1025, 999, 521, {"mouse 521"}, 0, true},
      {1026, 0, 513, {"old 1026"}, 5, false},        {275, 1, 0, {"old 275"}, 5, false},
      {275, 999, 0, {"old 275"}, 0, true},
  };
  for (const auto& row : rows) {
    icon.BalloonTipShow(1, "text", "title", 60000);
    told.clear();
    EXPECT_EQ(windows.Send(owner, row.message, row.word, row.long_word), row.result) << row.message;
    EXPECT_EQ(told, row.told);
    EXPECT_EQ(loop.RunningTimers(), row.stops ? 0U : 1U) << row.message << " " << row.long_word;
  }
}

TEST_F(TrayIconTest, KeepsTheWholeTipBesideTheRecords) {
  std::string whole; // of characters that take two bytes
  for (int count = 0; count < 130; ++count)
    whole += "\xC3\xBC";
  icon.Create(owner, kProgramIcon, whole);
  EXPECT_EQ(icon.ToolTip(), whole);
  EXPECT_EQ(tray.record.tip, whole.substr(0, 254));
}

TEST_F(TrayIconTest, ClosesTheDesktopsBalloonInTime) {
  icon.BalloonTipShow(1, "text", "title", 0);
  EXPECT_THAT(tray.calls, IsEmpty()) << "no icon yet";
  icon.Create(owner, kProgramIcon, "tip");
  icon.BalloonTipShow(2, "", "title", 3000);
  EXPECT_EQ(tray.record.info, " ");
  EXPECT_EQ(tray.record.info_flags, 2);
  Wait(2999);
  EXPECT_EQ(tray.record.info_title, "title");
  Wait(1);
  EXPECT_EQ(tray.record.info_title, "");
  EXPECT_EQ(loop.RunningTimers(), 0U);
  tray.shows_balloons = false;
  icon.BalloonTipShow(2, "text", "title", 3000);
  EXPECT_EQ(tray.record.info, "");
}

TEST_F(TrayIconTest, TracksTheIconWithOneEventForEachMove) {
  icon.SetTrackIconMovement(true);
  EXPECT_EQ(loop.RunningTimers(), 0U) << "there is no icon yet";
  icon.Create(owner, kProgramIcon, "tip");
  icon.SetIconMovementTrackInterval(500);
  const auto moves = [&] {
    Wait(2000);
    std::vector<std::string> seen = std::exchange(told, {});
    std::erase_if(seen, [](const std::string& line) { return !line.starts_with("moved"); });
    return seen;
  };
  EXPECT_THAT(moves(), IsEmpty());
  tray.rect = ScreenRect{100, 10, 121, 30};
  EXPECT_THAT(moves(), ElementsAre("moved 110 20"));
  tray.rect.reset(); // into an overflow, say
  EXPECT_THAT(moves(), ElementsAre("moved 0 0"));
  icon.SetTrackIconMovement(false);
  EXPECT_EQ(loop.RunningTimers(), 0U);
}

TEST_F(TrayIconTest, ComesBackWithItsTipWhenTheTrayRestarts) {
  const std::string tip(200, 't');
  icon.Create(owner, kProgramIcon, tip);
  tray.calls.clear();
  tray.on_restarted();
  EXPECT_THAT(tray.calls, ElementsAre("modify 16", "delete", "add"));
  EXPECT_THAT(told, ElementsAre("recreated"));
  EXPECT_EQ(icon.ToolTip(), tip);
  icon.Remove();
  EXPECT_EQ(windows.Table(owner), nullptr);
  told.clear();
  tray.on_restarted();
  tray.on_message(513);
  EXPECT_THAT(told, testing::Not(testing::Contains("recreated")));
}

TEST_F(TrayIconTest, AHandlersFailureStaysInside) {
  icon.Create(owner, kProgramIcon, "tip");
  icon.TrayMouseEvent = [&](std::uint32_t) {
    icon.Remove();
    throw std::runtime_error("a handler's fault");
  };
  tray.on_message(513);
  EXPECT_FALSE(icon.Created());
}

TEST(Balloon, TellsOnceWhenItComesAndGoes) {
  FakeLoop loop;
  LocalWindows windows(loop);
  MSubclass subclass(windows);
  FakeTipWindows tips;
  cToolTipOnDemand balloon(tips, windows, subclass);
  std::vector<std::string> told;
  balloon.BalloonShowed = [&] { told.emplace_back("showed"); };
  balloon.BalloonDestroyed = [&] { told.emplace_back("destroyed"); };
  balloon.MouseEvents = [&](std::uint32_t message) {
    told.push_back(std::to_string(message));
    if (message == 513)
      balloon.Destroy();
  };
  balloon.Properties.TimeOut = 3000;
  balloon.Show();
  balloon.Show();
  loop.Advance(std::chrono::milliseconds(2999));
  EXPECT_THAT(std::exchange(told, {}), ElementsAre("showed", "destroyed", "showed"));
  loop.Advance(std::chrono::milliseconds(1));
  balloon.Destroy();
  EXPECT_THAT(std::exchange(told, {}), ElementsAre("destroyed"));

  balloon.Properties.TimeOut = 0;
  balloon.Show();
  loop.Advance(std::chrono::hours(1));
  const auto on_mouse = tips.shown->on_mouse;
  for (const std::uint32_t message : {512U, 513U, 516U}) // the last one behind its end
    on_mouse(message);
  EXPECT_THAT(told, ElementsAre("showed", "512", "513", "destroyed"));
  EXPECT_EQ(loop.RunningTimers(), 0U);
}

TEST(MainWindowInTheTray, ShowsABalloonAtTheIconThatFollowsIt) {
  Desk desk;
  desk.Start();
  desk.Wait(995); // it hides by itself
  ASSERT_TRUE(desk.tips.shown);
  EXPECT_EQ(desk.tips.shown->content.prompt, "Kelmio Standard");
  desk.tray.rect = ScreenRect{1100, 1000, 1122, 1022};
  desk.Wait(500);
  EXPECT_EQ(desk.tips.shown->x, 1111);
  desk.tray.rect.reset();
  desk.Wait(500);
  EXPECT_EQ(desk.tips.shown->x, 1111) << "no position is no new position";
  desk.Wait(2000);
  EXPECT_FALSE(desk.tips.shown);

  desk.form.HideToTray();
  desk.tips.shown->on_mouse(window_message::kRightButtonDown);
  EXPECT_FALSE(desk.tips.shown);

  desk.tips.available = false;
  desk.form.HideToTray();
  EXPECT_EQ(desk.tray.record.info, "Kelmio Standard") << "the desktop's own balloon stands in";
}

TEST(MainWindowInTheTray, IsNotHiddenByTheStartOnceItWasAskedFor) {
  Desk desk;
  desk.Start();
  desk.form.HideToTray();
  desk.tray.on_message(window_message::kLeftDoubleClick);
  desk.Wait(2000);
  EXPECT_TRUE(desk.form.Visible);
}

TEST(MainWindowInTheTray, TellsInItsTipHowTheLineStands) {
  using Health = LineStatus::Health;
  Desk desk;
  desk.form.Load();
  EXPECT_EQ(desk.tray.record.tip, "Kelmio Standard");
  desk.line->status = {Health::Trying, "Registering with example.org."};
  desk.Wait(5);
  EXPECT_EQ(desk.tray.record.tip, "Kelmio Standard\nRegistering with example.org.");

  const LocalDateTime now = desk.loop.Now();
  desk.line->status = {Health::Ready, std::string(200, 'x'), {}, std::chrono::system_clock::now()};
  desk.line->TellStatus();
  desk.Run();
  const std::string tip = desk.tray.record.tip;
  EXPECT_TRUE(tip.ends_with("x\u2026\nLast call: " + FormatMonthDayYear(now) + " " + FormatTime24(now).substr(0, 5)))
      << tip;
  EXPECT_EQ(tip.size(), cTrayIcon::kTipLength + std::string("\u2026").size() - 1);
  desk.Wait(60000);
  desk.tray.on_restarted();
  EXPECT_EQ(desk.tray.record.tip, tip) << "the call came when it came";

  desk.form.ExecuteCommand(command::kSystemOff);
  EXPECT_EQ(desk.tray.record.tip, "Kelmio Standard");
}

} // namespace
} // namespace kelmio::test

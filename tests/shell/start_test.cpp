#include <gmock/gmock.h>

#include "support/desk.h"

namespace kelmio::test {
namespace {

std::string StoredText(const FakeRegistryStore& registry, const std::string& name) {
  const auto value = registry.Query(kHkeyLocalMachine, "Software\\Ardelta\\Kelmio\\Settings", name);
  return value ? value->bytes : "(none)";
}

TEST(Start, ComesUpFromNothingWithFolders) {
  Desk desk;
  desk.form.Load();
  EXPECT_FALSE(desk.ToolbarEnabled(kCommandAnswer));
  EXPECT_FALSE(desk.line->IsOpen()) << "the line is opened last";
  for (const char* folder : {"Photos", "Sound", "Messages/Inbox", "Messages/Deleted"})
    EXPECT_TRUE(std::filesystem::is_directory(desk.home.Path() + folder)) << folder;
  EXPECT_EQ(desk.auto_start.enabled_for, "/opt/kelmio/kelmio");

  desk.Wait(5);
  EXPECT_TRUE(desk.line->IsOpen());
  EXPECT_FALSE(std::filesystem::exists(desk.Index()));
}

TEST(Start, HidesToTheTrayASecondLaterAndComesBackByADoubleClick) {
  Desk desk;
  desk.Start();
  desk.form.Visible = true;
  desk.Wait(994);
  EXPECT_TRUE(desk.form.Visible);
  desk.Wait(1);
  EXPECT_FALSE(desk.form.Visible);
  desk.tray.on_message(window_message::kLeftDoubleClick);
  EXPECT_TRUE(desk.form.Visible);
  EXPECT_TRUE(desk.form.QueryUnload()) << "the close box only hides";
  EXPECT_FALSE(desk.form.Visible);
  EXPECT_TRUE(desk.line->IsOpen());
}

TEST(Start, NeverLosesTheWindowWhereThereIsNoTray) {
  Desk desk;
  desk.tray.available = false;
  desk.Start();
  desk.form.Visible = true;
  desk.Wait(2000);
  EXPECT_TRUE(desk.form.Visible);
  desk.form.ExecuteCommand(command::kHide);
  EXPECT_TRUE(desk.form.Visible);
  EXPECT_EQ(desk.form.State, WindowState::Minimized);
  EXPECT_FALSE(desk.form.QueryUnload()) << "the close box ends the program";
}

TEST(Shutdown, ClosesARunningRecordingBeforeTheLineAndSavesTheLayout) {
  Desk desk;
  desk.Start();
  desk.form.CommandBars1.SaveState = [] { return std::string("bars"); };
  desk.AnsweredCall();
  FakeCallSound* const sound = desk.sounds.Current();
  EXPECT_NE(sound->Recording(), "");
  desk.form.Left = 4500;
  desk.form.ExecuteCommand(command::kExit);
  EXPECT_EQ(sound->Recording(), "");
  EXPECT_FALSE(desk.line->IsOpen());
  EXPECT_FALSE(desk.tray.Created());
  EXPECT_TRUE(desk.loop.QuitAsked());
  EXPECT_EQ(StoredText(desk.registry, "MainLeft"), "4500");
  EXPECT_EQ(StoredText(desk.registry, "CommandBarsStateString"), "bars");

  // The next start finds the message whole.
  Desk next;
  std::filesystem::create_directory(next.home.Path() + "Messages");
  std::filesystem::copy(desk.home.Path() + "Messages/Inbox", next.home.Path() + "Messages/Inbox",
                        std::filesystem::copy_options::recursive);
  next.Start();
  ASSERT_EQ(next.form.lvwCalls.RowCount(), 1U);
  EXPECT_EQ(next.form.lvwCalls.Row(1).cells[1], "Jane Sample");
}

TEST(Shutdown, KeepsTheLastPlaceOfAMinimisedWindow) {
  Desk desk;
  desk.Store("MainLeft", "2000");
  desk.Start();
  desk.form.Left = 4500;
  desk.form.State = WindowState::Minimized;
  desk.form.Unload();
  EXPECT_EQ(StoredText(desk.registry, "MainLeft"), "2000");
}

TEST(MessageList, TurnsTheOrderRoundAtASecondClickAndStoresIt) {
  Desk desk;
  desk.Start();
  for (const char* name : {"Anna", "bert", "Carl"}) {
    const auto call = desk.Incoming();
    call->SendCallerID(name, "1");
    for (int ring = 1; ring <= 4; ++ring)
      desk.Ring(*call, ring);
    call->FarEndHangsUp();
    desk.Wait(1000);
  }
  const auto names = [&] {
    std::vector<std::string> list;
    for (const ListRow& row : desk.form.lvwCalls.Rows())
      list.push_back(row.cells[1]);
    return list;
  };
  EXPECT_THAT(names(), ::testing::ElementsAre("Anna", "bert", "Carl"));
  desk.form.lvwCalls.ColumnClick(2);
  EXPECT_THAT(names(), ::testing::ElementsAre("Anna", "Carl", "bert"));
  desk.form.lvwCalls.ColumnClick(2);
  EXPECT_THAT(names(), ::testing::ElementsAre("bert", "Carl", "Anna"));
  EXPECT_EQ(StoredText(desk.registry, "MessagesSortBy"), "-2");
}

} // namespace
} // namespace kelmio::test

#include <gmock/gmock.h>

#include "messages/folder_name_window.h"
#include "messages/frmOpen.h"
#include "support/desk.h"

namespace kelmio::test {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

/// A program with two messages of Jane, a contact, and of a stranger, one second apart.
class CommandRules : public ::testing::Test {
protected:
  void SetUp() override {
    const std::string contacts = desk.home.Path() + "Contacts.ini";
    mIni::IniWrite("1", "Name", "Jane Sample", contacts);
    mIni::IniWrite("1", "Phone", "5551234", contacts);
    mIni::IniWrite("1", "Email", "jane@example.org", contacts);
    mIni::IniWrite("1", "Mobile", "Unknown", contacts);
    desk.Start();
    for (const char* number : {"5551234", "030"}) {
      const auto call = desk.Incoming();
      call->SendCallerID("", number);
      for (int ring = 1; ring <= 4; ++ring)
        desk.Ring(*call, ring);
      call->FarEndHangsUp();
      desk.Wait(1000);
    }
    ASSERT_THAT(desk.Messages(), SizeIs(2));
  }

  void Select(std::vector<std::size_t> rows) {
    std::vector<std::uint64_t> keys;
    for (const std::size_t row : rows)
      keys.push_back(desk.form.lvwCalls.Row(row).key);
    desk.form.lvwCalls.SetSelection(keys, keys.empty() ? 0 : keys.back());
    desk.form.lvwCalls.ItemClick();
  }
  bool MenuEnabled(int id) {
    desk.form.UpdateCommands();
    return desk.form.CommandBars1.MenuBar().Find(id)->enabled;
  }
  bool MenuChecked(int id) {
    desk.form.UpdateCommands();
    return desk.form.CommandBars1.MenuBar().Find(id)->checked;
  }

  Desk desk;
};

TEST_F(CommandRules, FollowTheSelectionOfTheList) {
  for (const int id : {101, 102, 103, 104, 105, 201, 202, 403, 404})
    EXPECT_FALSE(MenuEnabled(id)) << id;
  EXPECT_FALSE(desk.ToolbarEnabled(command::kDelete));
  EXPECT_TRUE(MenuEnabled(command::kAddToContacts));
  EXPECT_FALSE(MenuEnabled(command::kEditContact));
  EXPECT_TRUE(MenuEnabled(command::kMarkRead)) << "a command without a rule stays enabled";

  Select({1});
  for (const int id : {101, 102, 103, 104, 105, 201, 202, 403, 404})
    EXPECT_TRUE(MenuEnabled(id)) << id;
  EXPECT_TRUE(desk.ToolbarEnabled(command::kDelete));
  EXPECT_FALSE(MenuEnabled(command::kAddToContacts));
  EXPECT_TRUE(MenuEnabled(command::kEditContact));
  Select({2});
  EXPECT_FALSE(MenuEnabled(command::kEditContact));
}

TEST_F(CommandRules, OpenTheListsMenuOverASelectionOnly) {
  std::vector<CommandBar> shown;
  desk.form.CommandBars1.ShowPopup = [&](const CommandBar& popup) { shown.push_back(popup); };
  desk.form.lvwCalls.MouseUp(ListView::MouseButton::Right);
  Select({1});
  desk.form.lvwCalls.MouseUp(ListView::MouseButton::Left);
  EXPECT_THAT(shown, SizeIs(0));
  desk.form.lvwCalls.MouseUp(ListView::MouseButton::Right);
  ASSERT_THAT(shown, SizeIs(1));
  EXPECT_FALSE(shown.front().Find(command::kAddToContacts)->enabled);
  EXPECT_TRUE(shown.front().Find(command::kEditContact)->enabled);
}

TEST_F(CommandRules, KnowWhichFoldersMayBeChanged) {
  EXPECT_FALSE(MenuEnabled(command::kRenameFolder)) << "the inbox is selected";
  EXPECT_TRUE(MenuEnabled(command::kNewFolder));
  desk.windows.use = [](Form& form) {
    auto& window = dynamic_cast<frmNewMsgFolder&>(form);
    window.txtName.Text = " Family ";
    window.cmdOK.Click();
  };
  desk.form.Folders.twvFolders.MouseUp(TreeView::MouseButton::Right, &desk.form.Folders.twvFolders.Nodes().front());
  desk.form.ExecuteCommand(command::kNewFolder);
  const std::string family = desk.home.Path() + "Messages/Family/";
  ASSERT_NE(desk.form.Folders.twvFolders.Find(family), nullptr);
  desk.form.Folders.twvFolders.Select(family);
  EXPECT_TRUE(MenuEnabled(command::kRenameFolder));
  EXPECT_TRUE(MenuEnabled(command::kDeleteFolder));

  Select({1});
  desk.form.Folders.twvFolders.DragDrop(desk.form.Folders.twvFolders.Find(family), true);
  EXPECT_EQ(desk.form.lvwCalls.RowCount(), 1U);
  desk.form.Folders.twvFolders.MouseUp(TreeView::MouseButton::Left, desk.form.Folders.twvFolders.Find(family));
  EXPECT_EQ(desk.form.MsgsTitleCaption.Caption.Get(), "Family");
  EXPECT_EQ(desk.form.lvwCalls.Row(1).cells[1], "Jane Sample");
}

TEST_F(CommandRules, ToggleBarsAndPanes) {
  for (const int id : {310, 312, 340, 341, 342}) {
    EXPECT_TRUE(MenuChecked(id)) << id;
    desk.form.ExecuteCommand(id);
    EXPECT_FALSE(MenuChecked(id)) << id;
    desk.form.ExecuteCommand(id);
    EXPECT_TRUE(MenuChecked(id)) << id;
  }
  desk.form.ExecuteCommand(command::kStatusBar);
  EXPECT_FALSE(desk.form.sbStatusBar.Visible);
  EXPECT_FALSE(desk.settings.MainStatusBarState);
  EXPECT_EQ(desk.registry.Query(kHkeyLocalMachine, "Software\\Ardelta\\Kelmio\\Settings", "MainStatusBarState")->bytes,
            "False");
  desk.form.DockingPaneManager.Find(kPreviewPane)->hidden = true;
  EXPECT_FALSE(MenuChecked(command::kPreviewWindow));
}

TEST_F(CommandRules, StoreTheVisualThemeAndTheColoursOfThoseThatHaveSome) {
  EXPECT_EQ(desk.appearance.visual_theme, 2);
  EXPECT_EQ(desk.appearance.system_themes.back(), 1) << "the start ends with the stored colours";
  desk.form.ExecuteCommand(command::kThemeSilver);
  desk.form.ExecuteCommand(command::kThemeOfficeXP);
  EXPECT_EQ(desk.appearance.visual_theme, 1);
  EXPECT_EQ(desk.settings.DefaultVisualTheme, 1);
  EXPECT_EQ(desk.settings.DefaultSystemTheme, 3);
  const auto stored =
      desk.registry.Query(kHkeyLocalMachine, "Software\\Ardelta\\Kelmio\\Settings", "DefaultVisualTheme");
  EXPECT_EQ(stored->bytes, "1");
}

TEST_F(CommandRules, PlayMarkReadAndResumeWhereTheyStopped) {
  Select({1});
  desk.mmc.length_ms = 9000;
  desk.form.ExecuteCommand(command::kPlayMessage);
  const std::string first = desk.Messages().front();
  EXPECT_EQ(desk.Entry(first, "Read"), "True");
  EXPECT_FALSE(desk.form.lvwCalls.Row(1).bold);
  EXPECT_TRUE(desk.form.lvwCalls.Row(2).bold);
  EXPECT_EQ(desk.mmc.update_interval, 20);
  desk.mmc.position_ms = 5000;
  desk.mmc.StatusUpdate();
  desk.mmc.position_ms = 99999;
  desk.mmc.StatusUpdate();
  EXPECT_EQ(desk.form.sldSlider.Value(), 5000) << "a place beyond the end is refused";

  desk.form.ExecuteCommand(command::kStopPlaying);
  EXPECT_TRUE(desk.app.StopPlaybackFlag);
  desk.form.ExecuteCommand(command::kPlayMessage);
  EXPECT_EQ(desk.mmc.from, 5000);
  Select({2});
  desk.form.ExecuteCommand(command::kPlayMessage);
  EXPECT_EQ(desk.mmc.from, 0) << "another message starts at its beginning";

  desk.form.sldSlider.SetValue(9000);
  desk.form.ExecuteCommand(command::kPlayMessage);
  EXPECT_EQ(desk.mmc.from, 0) << "a message that was heard to its end starts anew";
  desk.form.sldSlider.SetValue(3000);
  desk.form.sldSlider.Click();
  EXPECT_EQ(desk.mmc.from, 3000);
  EXPECT_EQ(desk.mmc.commands.back(), "play");

  desk.mmc.length_ms = 0;
  desk.form.ExecuteCommand(command::kPlayMessage);
  EXPECT_EQ(desk.mmc.commands.back(), "Close") << "a file without sound is stopped at once";
}

TEST_F(CommandRules, PlayNothingForAMessageWhoseFileIsGone) {
  Select({1});
  std::filesystem::remove(desk.home.Path() + "Messages/Inbox/" + desk.Messages().front());
  const std::size_t commands = desk.mmc.commands.size();
  desk.form.cmdPlayFile.Click();
  EXPECT_EQ(desk.mmc.commands.size(), commands);
  EXPECT_TRUE(desk.form.lvwCalls.Row(1).bold);
  desk.form.RefreshMessageList();
  Select({1});
  desk.form.cmdPlayFile.Click();
  EXPECT_EQ(desk.Messages().size(), 1U) << "a blank row plays nothing and writes nothing";
}

TEST_F(CommandRules, PreviewAndOpenTheCallersContact) {
  frmPreview& preview = desk.form.Preview;
  Select({1});
  EXPECT_EQ(preview.lblName.Caption.Get(), "Jane Sample");
  EXPECT_EQ(preview.lblEmail.Caption.Get(), "jane@example.org");
  EXPECT_TRUE(preview.lblEmail.Enabled);
  EXPECT_EQ(preview.picPhoto.Picture.Get(), "");
  preview.lblEmail.Click();
  ASSERT_THAT(desk.link_opener.requests, SizeIs(1));
  EXPECT_EQ(desk.link_opener.requests.front().file, "mailto:jane@example.org");
  preview.lblMobile.Click();
  EXPECT_EQ(desk.app.DialNumber, "Unknown") << "the preview dials what stands there";

  bool looked = false;
  desk.windows.use = [&](Form& form) {
    auto& open = dynamic_cast<frmOpen&>(form);
    EXPECT_EQ(open.lblNumber.Caption.Get(), "5551234");
    EXPECT_TRUE(open.lblNumber.Enabled);
    EXPECT_FALSE(open.lblMobile.Enabled);
    EXPECT_FALSE(open.lblWebsite.Enabled);
    looked = true;
  };
  desk.form.lvwCalls.DblClick();
  EXPECT_TRUE(looked);

  std::ofstream(desk.home.Path() + "Photos/1.bmp") << "BM";
  Select({1});
  EXPECT_EQ(preview.picPhoto.Picture.Get(), desk.home.Path() + "Photos/1.bmp");
  Select({2});
  EXPECT_EQ(preview.lblNumber.Caption.Get(), "030");
  EXPECT_EQ(preview.lblEmail.Caption.Get(), "");
  EXPECT_FALSE(preview.lblEmail.Enabled);
  EXPECT_EQ(preview.picPhoto.Picture.Get(), "");
  preview.lblEmail.Click();
  EXPECT_THAT(desk.link_opener.requests, SizeIs(1));
}

} // namespace
} // namespace kelmio::test

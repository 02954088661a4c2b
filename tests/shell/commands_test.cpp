#include <gmock/gmock.h>

#include "messages/folder_name_window.h"
#include "messages/frmOpen.h"
#include "support/desk.h"

namespace kelmio::test {
namespace {

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
  for (const bool selected : {false, true}) {
    if (selected)
      Select({1});
    for (const int id : {101, 102, 103, 104, 105, 201, 202, 403, 404})
      EXPECT_EQ(MenuEnabled(id), selected) << id;
    EXPECT_EQ(desk.ToolbarEnabled(command::kDelete), selected);
    EXPECT_EQ(MenuEnabled(command::kAddToContacts), !selected);
    EXPECT_EQ(MenuEnabled(command::kEditContact), selected);
  }
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
}

TEST_F(CommandRules, ToggleBarsAndPanes) {
  for (const int id : {310, 312, 340, 341, 342})
    for (const bool shown : {true, false, true}) {
      EXPECT_EQ(MenuChecked(id), shown) << id;
      desk.form.ExecuteCommand(id);
    }
  EXPECT_FALSE(desk.form.sbStatusBar.Visible);
  EXPECT_EQ(desk.registry.Query(kHkeyLocalMachine, "Software\\Ardelta\\Kelmio\\Settings", "MainStatusBarState")->bytes,
            "False");
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
  std::ofstream(desk.home.Path() + "Photos/1.bmp") << "BM";
  Select({1});
  EXPECT_EQ(preview.lblName.Caption.Get(), "Jane Sample");
  EXPECT_EQ(preview.picPhoto.Picture.Get(), desk.home.Path() + "Photos/1.bmp");
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
    looked = true;
  };
  desk.form.lvwCalls.DblClick();
  EXPECT_TRUE(looked);

  Select({2});
  EXPECT_EQ(preview.lblNumber.Caption.Get(), "030");
  EXPECT_EQ(preview.picPhoto.Picture.Get(), "");
  preview.lblEmail.Click();
  EXPECT_THAT(desk.link_opener.requests, SizeIs(1));
}

} // namespace
} // namespace kelmio::test

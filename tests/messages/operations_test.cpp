#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "messages/frmFolderPicker.h"
#include "messages/message_desk.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;
using test::BytesOf;
using test::NamesIn;
using test::WriteBytes;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class Operations : public test::MessageDesk {
protected:
  Operations() {
    for (const char* name : {"a.wav", "b.wav", "c.wav"})
      Add(inbox, name, std::string(name) == "b.wav");
  }
  // What the user does in the window that asks for a folder.
  void Choose(const std::string& key) {
    windows.use = [key](Form& form) {
      auto& picker_window = dynamic_cast<frmFolderPicker&>(form);
      if (!key.empty())
        picker_window.twvFolders.Select(key);
      picker_window.cmdOK.Click();
    };
  }
  std::string NewFolder(const std::string& name) {
    fs::create_directories(root + name);
    return root + name + "/";
  }
};

TEST_F(Operations, KeepsTheUnreadMarkWhenAMessageMovesFolder) {
  const std::string friends = NewFolder("Friends' \"quoted\" Größe");
  Open();
  SelectRows({1, 2});
  Choose(friends);
  operations.MoveMessages();
  EXPECT_THAT(RowFiles(), ElementsAre("c.wav"));
  EXPECT_THAT(Records(inbox), ElementsAre("c.wav"));
  EXPECT_THAT(Waves(inbox), ElementsAre("c.wav"));
  EXPECT_EQ(call_count, "1 Calls");
  EXPECT_EQ(BytesOf(friends + "a.wav"), "a.wav");
  EXPECT_EQ(Value(friends, "a.wav", "Read") + Value(friends, "b.wav", "Read"), "FalseTrue");
  EXPECT_THAT(mIni::IniSectionKeys("a.wav", friends + "Messages.ini"),
              ElementsAre("Name", "Number", "Date", "Time", "Read", "Mode", "Device", "Size", "Length"));
  EXPECT_EQ(Value(friends, "a.wav", "Length"), "1000");
  EXPECT_THAT(NamesIn(friends), UnorderedElementsAre("Messages.ini", "a.wav", "b.wav"));
  EXPECT_THAT(troubles, IsEmpty());
}

TEST_F(Operations, CopiesOverWhatIsThereAndLeavesTheOriginal) {
  const std::string target = NewFolder("Copies");
  WriteBytes(target + "a.wav", "an older sound");
  WriteBytes(target + "Messages.ini", "[a.wav]\nName=Old\nNote=mine\n");
  Open();
  SelectRows({1});
  Choose(target);
  operations.CopyMessages();
  EXPECT_EQ(BytesOf(target + "a.wav"), "a.wav");
  EXPECT_EQ(Value(target, "a.wav", "Name") + Value(target, "a.wav", "Note"), "Janemine");
  EXPECT_THAT(Waves(inbox), SizeIs(3));
  EXPECT_THAT(RowFiles(), SizeIs(3));
  // Two files, not two names of one: the copy may be changed alone.
  EXPECT_FALSE(fs::equivalent(inbox + "a.wav", target + "a.wav"));
}

TEST_F(Operations, CopyingIntoTheSameFolderCopiesNothingAndMovingRemoves) {
  Open();
  const std::string index = BytesOf(messages.IndexPath());
  SelectRows({1, 3});
  Choose(""); // the window opens on the inbox
  operations.CopyMessages();
  EXPECT_EQ(BytesOf(messages.IndexPath()), index);
  EXPECT_THAT(Waves(inbox), SizeIs(3));
  SelectRows({1, 3});
  operations.MoveMessages();
  EXPECT_THAT(Waves(inbox), ElementsAre("b.wav"));
  EXPECT_THAT(Records(inbox), ElementsAre("b.wav"));
  EXPECT_THAT(Records(deleted), IsEmpty());
}

TEST_F(Operations, NothingHappensWithoutASelectionOrAChoice) {
  Open();
  const std::string index = BytesOf(messages.IndexPath());
  list.lvwCalls.DeleteKey();
  operations.MoveMessages();
  operations.CopyMessages();
  operations.MoveDragedMessages(deleted);
  operations.SaveMessages();
  operations.RemoveMessages();
  operations.MarkMessages(true);
  operations.CopyMessagesToClipboard();
  EXPECT_THAT(windows.shown, IsEmpty());
  EXPECT_THAT(picker.titles, IsEmpty());
  EXPECT_THAT(clipboard.paths, IsEmpty());

  SelectRows({1, 2, 3});
  for (const bool escape : {true, false}) {
    windows.use = [escape](Form& form) {
      if (escape)
        return form.EscapePressed();
      dynamic_cast<frmFolderPicker&>(form).cmdCancel.Click();
    };
    operations.MoveTargetFolder = deleted; // left from an earlier delete
    operations.MoveMessages();
    operations.CopyMessages();
  }
  operations.MoveDragedMessages("");
  operations.SaveMessages();
  EXPECT_EQ(BytesOf(messages.IndexPath()), index);
  EXPECT_THAT(Waves(inbox), SizeIs(3));
  EXPECT_THAT(NamesIn(deleted), IsEmpty());
}

TEST_F(Operations, ReadsTheSelectionOnlyOnceTheWindowHasClosed) {
  Open();
  SelectRows({1});
  windows.use = [&](Form& form) {
    Add(inbox, "d.wav"); // a call has ended meanwhile
    list.RefreshMessageList();
    SelectRows({4});
    auto& picker_window = dynamic_cast<frmFolderPicker&>(form);
    picker_window.twvFolders.Select(root + "Deleted");
    picker_window.cmdOK.Click();
  };
  operations.MoveMessages();
  EXPECT_THAT(Waves(deleted), ElementsAre("d.wav"));
}

TEST_F(Operations, DeletesToTheDeletedMessagesAndFromThereForGoodAfterAQuestion) {
  Open();
  SelectRows({1, 2});
  list.lvwCalls.DeleteKey();
  EXPECT_THAT(boxes.shown, IsEmpty());
  EXPECT_THAT(Waves(deleted), UnorderedElementsAre("a.wav", "b.wav"));
  EXPECT_EQ(Value(deleted, "b.wav", "Read"), "True");
  EXPECT_THAT(Records(inbox), ElementsAre("c.wav"));

  Show(root + "Deleted");
  SelectRows({1});
  operations.DeleteMessages(); // answered No
  ASSERT_THAT(boxes.shown, SizeIs(1));
  EXPECT_EQ(boxes.shown[0].text, "Are you sure you want to permanently delete these message(s)?");
  EXPECT_EQ(boxes.shown[0].title, "Kelmio Standard");
  EXPECT_EQ(boxes.shown[0].buttons, BoxButtons::YesNo);
  EXPECT_EQ(boxes.shown[0].icon, BoxIcon::Warning);
  EXPECT_EQ(boxes.shown[0].default_button, 2);
  EXPECT_THAT(Waves(deleted), SizeIs(2));
  boxes.answers = {BoxAnswer::Yes};
  operations.DeleteMessages();
  EXPECT_THAT(Waves(deleted), SizeIs(1));
  EXPECT_EQ(Records(deleted), Waves(deleted));
  EXPECT_EQ(RowFiles(), Waves(deleted));
}

TEST_F(Operations, AsksBeforeItRemovesFromTheDeletedMessagesWithoutASelectedFolderToo) {
  Add(deleted, "x.wav");
  Open();
  Show(root + "Deleted");
  folders.RefreshFolders();
  ASSERT_EQ(folders.SelectedFolderTag(), std::nullopt);
  SelectRows({1});
  operations.DeleteMessages();
  EXPECT_THAT(boxes.shown, SizeIs(1));
  EXPECT_THAT(Waves(deleted), ElementsAre("x.wav"));
}

TEST_F(Operations, NeverTouchesWhatIsBeingRecorded) {
  Open();
  messages.SetRecording(inbox + "a.wav");
  // Another copy of the program records this one.
  const int writer = ::open((inbox + "b.wav").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(writer, LOCK_SH), 0);
  const auto remove = [this] { operations.RemoveMessages(); };
  const auto put_away = [this] { operations.DeleteMessages(); };
  const auto drag_home = [this] { operations.MoveDragedMessages(inbox); };
  const std::function<void()> attempts[] = {put_away, remove, drag_home};
  for (const auto& attempt : attempts) {
    Add(inbox, "c.wav");
    list.RefreshMessageList();
    operations.SelectAllMessages();
    attempt();
    EXPECT_THAT(Waves(inbox), UnorderedElementsAre("a.wav", "b.wav"));
    EXPECT_THAT(RowFiles(), ElementsAre("a.wav", "b.wav"));
  }
  EXPECT_THAT(Waves(deleted), ElementsAre("c.wav"));
  EXPECT_THAT(troubles, SizeIs(6));
  EXPECT_THAT(troubles[0], HasSubstr("still being recorded"));

  ::close(writer);
  messages.ClearRecording();
  operations.SelectAllMessages();
  operations.RemoveMessages();
  EXPECT_THAT(Waves(inbox), IsEmpty());
}

TEST_F(Operations, ABlankRowIsNoFileAndNoRecord) {
  fs::remove(inbox + "b.wav");
  Open();
  ASSERT_THAT(RowFiles(), ElementsAre("a.wav", "", "c.wav"));
  const std::string index = BytesOf(messages.IndexPath());
  picker.choice = NewFolder("Saved");
  SelectRows({2});
  operations.MarkMessages(true);
  operations.SaveMessages();
  operations.CopyMessagesToClipboard();
  operations.MoveDragedMessages(deleted);
  EXPECT_EQ(BytesOf(messages.IndexPath()), index);
  EXPECT_THAT(clipboard.paths, IsEmpty());
  EXPECT_THAT(NamesIn(picker.choice), IsEmpty());
  EXPECT_THAT(NamesIn(deleted), IsEmpty());
  EXPECT_THAT(RowFiles(), ElementsAre("a.wav", "c.wav"));
}

TEST_F(Operations, AFileThatVanishedUnderTheListTravelsAsARecordThatHeals) {
  Open();
  fs::remove(inbox + "a.wav");
  SelectRows({1});
  operations.MoveDragedMessages(deleted);
  EXPECT_THAT(Records(inbox), ElementsAre("b.wav", "c.wav"));
  EXPECT_THAT(Records(deleted), ElementsAre("a.wav"));
  EXPECT_THAT(troubles, ElementsAre(HasSubstr("a.wav")));
  Show(root + "Deleted");
  EXPECT_THAT(Records(deleted), IsEmpty());
  EXPECT_THAT(boxes.shown, IsEmpty());
}

TEST_F(Operations, AMessageWhoseRecordCannotBeKeptStaysWhereItIs) {
  Open();
  fs::create_directory(deleted + "Messages.ini");
  SelectRows({1});
  operations.DeleteMessages();
  EXPECT_THAT(Waves(inbox), SizeIs(3));
  EXPECT_THAT(Records(inbox), SizeIs(3));
  EXPECT_THAT(troubles, ElementsAre(HasSubstr("Messages.ini")));

  troubles.clear();
  operations.MoveDragedMessages(root + "gone");
  EXPECT_THAT(Waves(inbox), SizeIs(3));
}

TEST_F(Operations, ShowsWhyAFileCannotBeDeletedAndGoesOn) {
  if (::geteuid() == 0)
    GTEST_SKIP() << "needs a user who isn't root";
  Open();
  fs::permissions(inbox, fs::perms::owner_read | fs::perms::owner_exec);
  SelectRows({1, 2});
  operations.RemoveMessages();
  fs::permissions(inbox, fs::perms::owner_all);
  ASSERT_THAT(boxes.shown, SizeIs(2));
  EXPECT_EQ(boxes.shown[0].text, "Error: Permission denied");
  EXPECT_EQ(boxes.shown[0].title, "");
  EXPECT_EQ(boxes.shown[0].buttons, BoxButtons::Ok);
  EXPECT_THAT(RowFiles(), SizeIs(3));
}

TEST_F(Operations, MarksTheSelectedRowsAndNothingElse) {
  Open();
  std::string expected = BytesOf(messages.IndexPath());
  SelectRows({1, 2});
  operations.MarkMessages(true);
  expected.replace(expected.find("Read=False"), 10, "Read=True"); // the first record; the second was read already
  EXPECT_EQ(BytesOf(messages.IndexPath()), expected);
  EXPECT_FALSE(list.lvwCalls.Row(1).bold || list.lvwCalls.Row(2).bold);
  EXPECT_TRUE(list.lvwCalls.Row(3).bold);
  EXPECT_FALSE(messages.Messages()[0].Read) << "the record in memory keeps its mark until the next load";
  operations.MarkMessages(false);
  EXPECT_TRUE(list.lvwCalls.Row(1).bold && list.lvwCalls.Row(2).bold);
  list.RefreshMessageList();
  EXPECT_TRUE(list.lvwCalls.Row(2).bold);
}

TEST_F(Operations, SavesTheFilesAloneAndPutsTheirPathsOnTheClipboard) {
  const std::string name = std::string(240, 'n') + ".wav";
  Add(inbox, name);
  Open();
  const std::string index = BytesOf(messages.IndexPath());
  picker.choice = home.Path() + "On a disk";
  fs::create_directory(picker.choice);
  operations.SelectAllMessages();
  operations.SaveMessages();
  EXPECT_THAT(picker.titles, ElementsAre("Select folder"));
  EXPECT_THAT(NamesIn(picker.choice), UnorderedElementsAre("a.wav", "b.wav", "c.wav", name));
  EXPECT_EQ(BytesOf(messages.IndexPath()), index);
  EXPECT_THAT(RowFiles(), SizeIs(4));
  SelectRows({1, 3});
  operations.CopyMessagesToClipboard();
  EXPECT_THAT(clipboard.paths, ElementsAre(inbox + "a.wav", inbox + "c.wav"));
}

TEST_F(Operations, ABoxLetsTheListChangeUnderTheOperation) {
  // While a box is open a call ends, and the list is filled anew with nothing.
  class BusyBoxes : public FakeMessageBoxes {
  public:
    BoxAnswer Show(const std::string& text, const std::string& title, BoxButtons buttons, BoxIcon icon,
                   int default_button) override {
      while_open();
      return FakeMessageBoxes::Show(text, title, buttons, icon, default_button);
    }
    std::function<void()> while_open;
  } busy;
  MessageOperations own({messages, list, busy, picker, clipboard, windows, *this, trouble});
  busy.while_open = [&] {
    messages.SetCurrentFolder(deleted);
    list.RefreshMessageList();
  };
  Open();
  folders.twvFolders.Select(root + "Deleted");
  SelectRows({2, 3});
  busy.answers = {BoxAnswer::Yes};
  own.DeleteMessages();
  EXPECT_THAT(busy.shown, SizeIs(1));
  EXPECT_THAT(Waves(inbox), SizeIs(3));

  if (::geteuid() == 0)
    GTEST_SKIP() << "the box for a file that can't be deleted needs a user who isn't root";
  messages.SetCurrentFolder(inbox);
  list.RefreshMessageList();
  operations.SelectAllMessages();
  fs::permissions(inbox, fs::perms::owner_read | fs::perms::owner_exec);
  own.RemoveMessages();
  fs::permissions(inbox, fs::perms::owner_all);
  EXPECT_THAT(busy.shown, SizeIs(2)) << "one box, and then there are no more rows";
}

} // namespace
} // namespace kelmio

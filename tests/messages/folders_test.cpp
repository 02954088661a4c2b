#include <sys/stat.h>

#include "messages/folder_name_window.h"
#include "messages/frmFolderPicker.h"
#include "messages/message_desk.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;
using test::NamesIn;
using test::WriteBytes;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

using enum ListView::MouseButton;

class Folders : public test::MessageDesk {
protected:
  std::string Make(const std::string& name) {
    fs::create_directories(root + name);
    return root + name + "/";
  }
  // Types a name into the next window and presses OK; says whether the window closed.
  void Type(const std::string& name) {
    windows.use = [this, name](Form& form) {
      auto& asked = dynamic_cast<FolderNameWindow&>(form);
      preset = asked.txtName.Text;
      asked.txtName.Text = name;
      asked.cmdOK.Click();
      closed = !asked.Visible;
    };
  }
  void MakeNew(const std::string& name) {
    Type(name);
    message_folders.NewMessagesFolder();
  }
  void Rename(const std::string& key, const std::string& name) {
    Click(Right, key);
    Type(name);
    message_folders.RenameMessagesFolder();
  }
  bool PopupEnabled(int id) { return popup.Find(id)->enabled; }

  std::string preset;
  bool closed = false;
};

TEST_F(Folders, ShowsPlainFoldersUnderTheirParentsInTheOrderOfTheirNames) {
  Make("zoo/Inbox");
  Make("Family/Ängste & \"so\"/deep");
  Make(".hidden");
  Make("family");
  fs::permissions(Make("locked"), fs::perms::owner_read | fs::perms::owner_exec);
  fs::create_directory_symlink(home.Path(), root + "link");
  WriteBytes(root + "file", "");
  Open();
  EXPECT_THAT(Nodes(), ElementsAre("Recorded Messages ", "Inbox Inbox", "Deleted Deleted", "Family Family/",
                                   "Ängste & \"so\" Family/Ängste & \"so\"/", "deep Family/Ängste & \"so\"/deep/",
                                   "family family/", "zoo zoo/"));
  const TreeView& tree = folders.twvFolders;
  EXPECT_TRUE(tree.Nodes()[0].expanded);
  EXPECT_EQ(tree.Nodes()[0].key, root);
  EXPECT_EQ(tree.Find(root + "Family/")->parent_key, root);
  std::string tags;
  std::string images;
  for (const TreeNode& node : tree.Nodes()) {
    tags += node.tag + " ";
    images += std::to_string(node.image);
  }
  EXPECT_EQ(tags, "Root Inbox Deleted Folder Folder Folder Folder Folder ");
  EXPECT_EQ(images, "23477777");
  EXPECT_EQ(tree.SelectedNode()->text, "Inbox");
  EXPECT_EQ(folder_caption, "Inbox");
  EXPECT_THAT(troubles, IsEmpty());
}

TEST_F(Folders, AFolderBelowTheInboxStopsTheBuildingWithAWord) {
  Make("Before/below");
  Make("Inbox/Mine");
  Make("Later");
  Open();
  EXPECT_THAT(Nodes(), ElementsAre("Recorded Messages ", "Inbox Inbox", "Deleted Deleted", "Before Before/",
                                   "below Before/below/"));
  EXPECT_THAT(troubles, ElementsAre(HasSubstr(root + "Inbox/Mine")));
  EXPECT_THAT(boxes.shown, IsEmpty());
  EXPECT_EQ(folder_caption, "Inbox");
}

TEST_F(Folders, ALeftClickShowsTheFolder) {
  const std::string mine = Make("Mine");
  Add(mine, "a.wav");
  Open();
  EXPECT_EQ(call_count, "0 Calls");
  Show(mine);
  EXPECT_EQ(messages.CurrentFolder(), mine);
  EXPECT_EQ(call_count, "1 Calls");
  EXPECT_EQ(folder_caption, "Mine");
  Show(root);
  EXPECT_EQ(call_count, "0 Calls");
  EXPECT_EQ(folder_caption, "Recorded Messages");
  folders.twvFolders.MouseUp(Left, nullptr);
  EXPECT_EQ(messages.CurrentFolder(), root);
}

TEST_F(Folders, ARightClickOpensThePopupForTheNodeUnderIt) {
  const std::string mine = Make("Mine");
  Open();
  for (const std::string& fixed : {root, root + "Inbox", root + "Deleted"}) {
    Click(Right, fixed);
    EXPECT_EQ(folders.ContextNode()->key, fixed);
    EXPECT_TRUE(PopupEnabled(150) && !PopupEnabled(151) && !PopupEnabled(152)) << fixed;
  }
  Click(Right, mine);
  EXPECT_TRUE(PopupEnabled(150) && PopupEnabled(151) && PopupEnabled(152));
  EXPECT_EQ(folders.twvFolders.SelectedNode()->text, "Inbox") << "a right click shows no other folder";
  folders.RefreshFolders();
  EXPECT_EQ(folders.ContextNode()->tag, "Inbox");
}

TEST_F(Folders, MessagesDroppedOnAFolderGoThere) {
  const std::string mine = Make("Mine");
  Add(inbox, "a.wav");
  Add(inbox, "b.wav");
  Open();
  SelectRows({1});
  TreeView& tree = folders.twvFolders;
  tree.DragOver(tree.Find(mine));
  tree.DragOver(nullptr);
  EXPECT_EQ(tree.DropHighlight.Get(), mine);
  tree.DragDrop(tree.Find(mine), false);
  EXPECT_EQ(tree.DropHighlight.Get(), "");
  EXPECT_THAT(Waves(mine), IsEmpty()) << "what was dragged has no text";
  tree.DragDrop(nullptr, true);
  tree.DragDrop(tree.Find(mine), true);
  EXPECT_THAT(Waves(mine), ElementsAre("a.wav"));
  SelectRows({1});
  tree.DragDrop(tree.Find(root + "Inbox"), true); // onto the folder it is in
  EXPECT_THAT(Waves(inbox), IsEmpty());
}

TEST_F(Folders, TheWindowToChooseAFolderOpensOnTheInboxAndRefusesTheRoot) {
  const std::string mine = Make("Mine");
  std::string target = "left over";
  frmMove move(root.substr(0, root.size() - 1), target, trouble);
  EXPECT_EQ(move.Caption.Get(), "Move");
  move.Load();
  EXPECT_EQ(target, "");
  EXPECT_EQ(move.twvFolders.SelectedNode()->key, root + "Inbox");
  for (const TreeNode& node : move.twvFolders.Nodes())
    EXPECT_EQ(node.image, 1);
  const auto choose = [&](const std::string& key) {
    move.twvFolders.Select(key);
    move.twvFolders.NodeClick();
    return move.cmdOK.Enabled.Get();
  };
  EXPECT_FALSE(choose(root));
  EXPECT_TRUE(choose(root + "Deleted"));
  EXPECT_TRUE(choose(mine));
  move.Visible = true;
  move.cmdOK.Click();
  EXPECT_FALSE(move.Visible);
  EXPECT_EQ(target, mine);
  move.cmdCancel.Click();
  EXPECT_EQ(target, "");
}

TEST_F(Folders, MakesAFolderBelowTheContextNode) {
  Open();
  MakeNew("   ");
  EXPECT_TRUE(closed);
  EXPECT_THAT(Nodes(), SizeIs(3));

  Click(Right, root);
  MakeNew("  It's \"new\"  ");
  EXPECT_EQ(preset, "");
  EXPECT_TRUE(closed);
  EXPECT_THAT(Nodes(), Contains("It's \"new\" It's \"new\"/"));
  EXPECT_EQ(folders.twvFolders.SelectedNode(), nullptr);

  Click(Right, root + "It's \"new\"/");
  MakeNew("a/b");
  EXPECT_THAT(Nodes(), Contains("b It's \"new\"/a/b/"));
  EXPECT_THAT(troubles, IsEmpty());
}

TEST_F(Folders, ANameThatLeavesTheMessagesOrIsNoneMakesNothing) {
  const std::string names[] = {"../../../out",       "..", "../..", "../../Messages2", std::string("a\0b", 3),
                               std::string(300, 'x')};
  Open();
  for (const std::string& name : names) {
    troubles.clear();
    MakeNew(name);
    EXPECT_TRUE(closed);
    EXPECT_THAT(troubles, SizeIs(1)) << name;
    EXPECT_THAT(NamesIn(home.Path()), ElementsAre("Messages"));
    EXPECT_THAT(Nodes(), SizeIs(3));
  }
}

TEST_F(Folders, RenamesTheContextNodesFolder) {
  const std::string mine = Make("Mine");
  Make("Mine/below");
  Add(mine, "a.wav");
  Open();
  Show(mine);
  EXPECT_EQ(call_count, "1 Calls");
  Rename(mine, "Mine");
  EXPECT_TRUE(closed);
  EXPECT_EQ(preset, "Mine");
  Rename(mine, " Yours ");
  EXPECT_TRUE(closed);
  EXPECT_THAT(Nodes(), Contains("below Yours/below/"));
  EXPECT_THAT(Waves(root + "Yours/"), ElementsAre("a.wav"));
  EXPECT_EQ(messages.CurrentFolder(), mine);
  EXPECT_EQ(call_count, "0 Calls");
  EXPECT_THAT(troubles, IsEmpty());
}

TEST_F(Folders, ARefusedRenamingChangesNothingAndLeavesTheWindowOpen) {
  const std::string mine = Make("Mine");
  Make("Taken");
  Open();
  for (const char* name : {"Taken", "Mine/below", "no/where", "../../out", ".."}) {
    troubles.clear();
    Rename(mine, name);
    EXPECT_FALSE(closed) << name;
    EXPECT_THAT(troubles, SizeIs(1)) << name;
    EXPECT_TRUE(fs::exists(mine)) << name;
  }
  Rename(root, "Other");
  EXPECT_FALSE(closed);
  EXPECT_THAT(NamesIn(home.Path()), ElementsAre("Messages"));
}

TEST_F(Folders, DeletesTheSelectedFolderAfterTwoQuestions) {
  const std::string mine = Make("Mine");
  Add(mine, "a.wav");
  Add(Make("Mine/below"), "b.wav");
  WriteBytes(home.Path() + "precious", "");
  fs::create_directory_symlink(home.Path(), mine + "link");
  Open();
  Click(Right, root + "Deleted"); // the context node is another
  folders.twvFolders.Select(mine);
  boxes.answers = {BoxAnswer::Cancel, BoxAnswer::Yes, BoxAnswer::No};
  message_folders.DeleteMessagesFolder();
  EXPECT_THAT(boxes.shown, SizeIs(1));
  message_folders.DeleteMessagesFolder();
  ASSERT_THAT(boxes.shown, SizeIs(3));
  EXPECT_TRUE(fs::exists(mine + "a.wav"));
  EXPECT_EQ(boxes.shown[1].title, "Delete Messages Folder");
  EXPECT_EQ(boxes.shown[2].title, "Confirm Delete Messages Folder");
  EXPECT_EQ(boxes.shown[2].text, "Please note this action can not be undone. Are you sure you still want to "
                                 "permanently delete this folder and all its messages?");
  EXPECT_EQ(boxes.shown[2].buttons, BoxButtons::YesNoCancel);
  EXPECT_EQ(boxes.shown[2].default_button, 2);

  boxes.answers = {BoxAnswer::Yes, BoxAnswer::Yes};
  message_folders.DeleteMessagesFolder();
  EXPECT_FALSE(fs::exists(mine));
  EXPECT_THAT(Nodes(), SizeIs(3));
  EXPECT_TRUE(fs::exists(home.Path() + "precious")) << "a link is deleted, never followed";
}

TEST_F(Folders, NeverDeletesAFixedFolderNorBehindALink) {
  Add(inbox, "a.wav");
  const std::string mine = Make("Mine");
  WriteBytes(home.Path() + "precious", "");
  Open();
  const auto delete_selected = [&](const std::string& key) {
    folders.twvFolders.Select(key);
    boxes.answers = {BoxAnswer::Yes, BoxAnswer::Yes};
    message_folders.DeleteMessagesFolder();
  };
  for (const std::string& key : {std::string(), root, root + "Inbox", root + "Deleted"})
    delete_selected(key);
  EXPECT_THAT(Waves(inbox), ElementsAre("a.wav"));
  EXPECT_TRUE(fs::exists(deleted) && fs::exists(mine));
  // The folder was replaced by a link since the tree was built.
  fs::remove(mine);
  fs::create_directory_symlink(home.Path(), root + "Mine");
  delete_selected(mine);
  EXPECT_TRUE(fs::exists(home.Path() + "precious"));
  EXPECT_THAT(NamesIn(root), Not(Contains("Mine")));
}

TEST_F(Folders, AFolderThatCannotBeEmptiedStaysAndTheTreeWithIt) {
  if (::geteuid() == 0)
    GTEST_SKIP() << "needs a user who isn't root";
  const std::string mine = Make("Mine");
  const std::string locked = Make("Mine/a locked");
  Add(locked, "kept.wav");
  Add(mine, "b.wav");
  Open();
  folders.twvFolders.Select(mine);
  fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
  boxes.answers = {BoxAnswer::Yes, BoxAnswer::Yes};
  message_folders.DeleteMessagesFolder();
  fs::permissions(locked, fs::perms::owner_all);
  EXPECT_TRUE(fs::exists(locked + "kept.wav"));
  EXPECT_FALSE(fs::exists(mine + "b.wav"));
  EXPECT_EQ(folders.twvFolders.SelectedNode()->key, mine);
}

} // namespace
} // namespace kelmio

// Message list, folder tree and what works on them, wired as in the main window, on folders of a test's own.
#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/mIni.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_loop.h"
#include "messages/frmFolders.h"
#include "messages/message_folders.h"
#include "messages/message_list.h"
#include "messages/message_operations.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio::test {

class MainWindowOfTest : public Form {
public:
  MainWindowOfTest() { Caption = "Kelmio Standard"; }
  void VisitControls(ControlVisitor& /*visitor*/) override {}
};

class MessageDesk : public testing::Test, public MessageListHost, public MessageOperationsHost, public FolderHost {
public:
  MessageDesk() {
    std::filesystem::create_directories(inbox);
    std::filesystem::create_directories(deleted);
    list.CreateColumns();
  }

  // The hosts.
  void SetCallCount(const std::string& text) override { call_count = text; }
  void PreviewMessage() override {}
  void PumpEvents() override {}
  std::optional<std::string> SelectedFolderTag() const override { return folders.SelectedFolderTag(); }
  Form& MainWindow() override { return window; }
  void SetFolderCaption(const std::string& name) override { folder_caption = name; }
  void RefreshMessageList() override { list.RefreshMessageList(); }
  void MoveDragedMessages(const std::string& target) override { operations.MoveDragedMessages(target); }
  CommandBar BuildFolderPopup() const override {
    CommandBar all;
    for (const int id : {kCommandNewFolder, kCommandRenameFolder, kCommandDeleteFolder})
      all.items.emplace_back().id = id;
    return all;
  }
  void ShowFolderPopup(const CommandBar& shown) override { popup = shown; }

  TemporaryFolder home;
  std::string root = home.Path() + "Messages/";
  std::string inbox = root + "Inbox/";
  std::string deleted = root + "Deleted/";

  /// A message with its file, whose sound is its name.
  void Add(const std::string& folder, const std::string& file_name, bool read = false) {
    WriteBytes(folder + file_name, file_name);
    mIni::IniWriteSection(file_name,
                          {{"Name", "Jane"},
                           {"Number", "555"},
                           {"Date", "11/15/2026"},
                           {"Time", "09:07:42"},
                           {"Read", read ? "True" : "False"},
                           {"Mode", "Auto"},
                           {"Device", "3"},
                           {"Size", "20"},
                           {"Length", "1000"}},
                          folder + "Messages.ini");
  }
  /// The start of the program: the inbox on show.
  void Open() {
    folders.Load();
    list.RefreshMessageList();
  }
  /// A left click on a folder.
  void Show(const std::string& key) {
    folders.twvFolders.Select(key);
    Click(TreeView::MouseButton::Left, key);
  }
  void Click(TreeView::MouseButton button, const std::string& key) {
    folders.twvFolders.MouseUp(button, folders.twvFolders.Find(key));
  }
  void SelectRows(const std::vector<std::size_t>& rows) {
    std::vector<std::uint64_t> keys;
    for (const std::size_t row : rows)
      keys.push_back(list.lvwCalls.Row(row).key);
    list.lvwCalls.SetSelection(keys, keys.empty() ? 0 : keys.back());
  }
  static std::vector<std::string> Records(const std::string& folder) {
    return mIni::IniSectionNames(folder + "Messages.ini");
  }
  static std::string Value(const std::string& folder, const std::string& file_name, const std::string& key) {
    return mIni::IniRead(file_name, key, folder + "Messages.ini");
  }
  /// The wave files of a folder, without its index and folders.
  static std::vector<std::string> Waves(const std::string& folder) {
    std::vector<std::string> names;
    for (const std::string& name : NamesIn(folder))
      if (name.ends_with(".wav"))
        names.push_back(name);
    return names;
  }
  std::vector<std::string> RowFiles() const {
    std::vector<std::string> names;
    for (const ListRow& row : list.lvwCalls.Rows())
      names.push_back(row.tag);
    return names;
  }
  /// The text and key of every node, the key without the message root.
  std::vector<std::string> Nodes() const {
    std::vector<std::string> nodes;
    for (const TreeNode& node : folders.twvFolders.Nodes())
      nodes.push_back(node.text + " " + node.key.substr(root.size()));
    return nodes;
  }

  std::string call_count;
  std::string folder_caption;
  CommandBar popup;
  std::vector<std::string> troubles;
  TroubleSink trouble = [this](const std::string& sentence) { troubles.push_back(sentence); };
  FakeLoop clock;
  FakeRegistryStore registry;
  FakeMultimediaDevice mmc;
  FakeMessageBoxes boxes;
  FakeFolderPicker picker;
  FakeFileClipboard clipboard;
  FakeWindows windows;
  MainWindowOfTest window;
  Settings settings;
  MessageStore messages{home.Path(), clock, mmc, trouble};
  MessageList list{{settings, registry, messages, mmc, *this}};
  frmFolders folders{messages, *this, trouble};
  MessageOperations operations{{messages, list, boxes, picker, clipboard, windows, *this, trouble}};
  MessageFolders message_folders{{messages, list, folders, boxes, windows, window, trouble}};
};

} // namespace kelmio::test

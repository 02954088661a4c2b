#include "messages/message_folders.h"

#include <filesystem>

#include "core/mGeneral.h"
#include "core/program_paths.h"
#include "core/store_file.h"
#include "messages/folder_name_window.h"
#include "messages/folder_tree.h"
#include "messages/message_list.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;

std::string WithoutClosingSeparator(std::string path) {
  if (path.ends_with('/'))
    path.pop_back();
  return path;
}

} // namespace

MessageFolders::MessageFolders(House house) : house_(std::move(house)) {}

void MessageFolders::NewMessagesFolder() {
  const TreeNode* node = house_.folders.ContextNode();
  if (node == nullptr)
    return;
  frmNewMsgFolder window([this, above = node->key](const std::string& name) { return MakeFolder(above, name); });
  house_.windows.ShowModal(window, &house_.main_window);
}

void MessageFolders::RenameMessagesFolder() {
  const TreeNode* node = house_.folders.ContextNode();
  if (node == nullptr)
    return;
  // A copy: the tree may be built anew while the window is open.
  frmRenameMsgFolder window(node->text,
                            [this, old = *node](const std::string& name) { return RenameFolder(old, name); });
  house_.windows.ShowModal(window, &house_.main_window);
}

void MessageFolders::DeleteMessagesFolder() {
  if (!Confirmed("Are you sure you want to permanently delete this folder and all its messages?",
                 "Delete Messages Folder") ||
      !Confirmed("Please note this action can not be undone. Are you sure you still want to permanently delete this "
                 "folder and all its messages?",
                 "Confirm Delete Messages Folder"))
    return;
  const TreeNode* node = house_.folders.twvFolders.SelectedNode();
  if (node == nullptr || IsFixedFolder(*node) || node->key.find(house_.messages.MessagesFolder()) == std::string::npos)
    return;
  const std::string path = WithoutClosingSeparator(node->key);
  std::error_code error;
  if (!fs::is_symlink(path, error)) // one that took the folder's place leads to what isn't ours
    mGeneral::DeleteFolderContents(path);
  if (!fs::remove(path, error))
    return;
  Refresh();
}

bool MessageFolders::MakeFolder(const std::string& above, const std::string& name) {
  const std::string path = PathBelowRoot(WithClosingSeparator(above) + name);
  if (!path.empty())
    mGeneral::EnsureFolder(path);
  std::error_code error;
  if (path.empty() || !fs::is_directory(path, error))
    house_.trouble("Could not make the message folder \"" + name + "\".");
  Refresh();
  return true;
}

bool MessageFolders::RenameFolder(const TreeNode& node, const std::string& name) {
  const std::string path = node.parent_key.empty() ? "" : PathBelowRoot(WithClosingSeparator(node.parent_key) + name);
  const std::error_code error = path.empty() ? std::make_error_code(std::errc::invalid_argument)
                                             : RenameUnlessTaken(WithoutClosingSeparator(node.key), path);
  if (error) {
    house_.trouble("Could not rename the message folder \"" + node.text + "\" to \"" + name +
                   "\": " + mGeneral::SystemErrorText(error.value()) + ".");
    return false;
  }
  Refresh();
  return true;
}

std::string MessageFolders::PathBelowRoot(const std::string& path) const {
  const std::string root = fs::path(house_.messages.MessagesFolder() + "/").lexically_normal().string();
  const std::string normal = fs::path(path).lexically_normal().string();
  const bool below = normal.size() > root.size() && normal.starts_with(root);
  return below && path.find('\0') == std::string::npos ? WithoutClosingSeparator(normal) : "";
}

bool MessageFolders::Confirmed(const char* text, const char* title) {
  constexpr int kNo = 2;
  return house_.boxes.Show(text, title, BoxButtons::YesNoCancel, BoxIcon::Warning, kNo) == BoxAnswer::Yes;
}

void MessageFolders::Refresh() {
  house_.folders.RefreshFolders();
  house_.list.RefreshMessageList();
}

} // namespace kelmio

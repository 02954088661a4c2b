#include "messages/folder_tree.h"

#include <algorithm>
#include <filesystem>
#include <tuple>
#include <vector>

#include "core/text.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;

bool IsPlainFolder(const fs::directory_entry& entry) {
  constexpr fs::perms kMayWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  std::error_code error;
  const fs::file_status status = entry.symlink_status(error);
  return !error && fs::is_directory(status) && (status.permissions() & kMayWrite) != fs::perms::none &&
         entry.path().filename().native().front() != '.';
}

// The order of a directory is any order; sorted, a folder is found again where it was.
std::vector<std::string> PlainFoldersIn(const std::string& path) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error))
    if (IsPlainFolder(*entry))
      names.push_back(entry->path().filename().string());
  std::sort(names.begin(), names.end(), [](const std::string& left, const std::string& right) {
    return std::tuple(AsciiLower(left), left) < std::tuple(AsciiLower(right), right);
  });
  return names;
}

struct TreeBuilder {
  TreeView& tree;
  const FolderImages& images;
  const TroubleSink& trouble;

  // False when a folder found no place; nothing more is to be added then.
  bool AddSubFolders(const std::string& path) {
    const std::string base = path + "/";
    for (const std::string& name : PlainFoldersIn(base)) {
      if (name != kInboxTag && name != kDeletedTag && !AddUserFolder(base, name))
        return false;
      if (!AddSubFolders(base + name))
        return false;
    }
    return true;
  }

  bool AddUserFolder(const std::string& base, const std::string& name) {
    TreeNode* node = tree.Add(base, base + name + "/", name, images.user_folder);
    if (node == nullptr) {
      trouble("Could not show the folder \"" + base + name + "\" in the folder tree.");
      return false;
    }
    node->tag = kUserFolderTag;
    return true;
  }
};

} // namespace

bool IsFixedFolder(const TreeNode& node) {
  return node.tag == kRootTag || node.tag == kInboxTag || node.tag == kDeletedTag;
}

std::string InboxKey(const std::string& messages_folder) {
  return messages_folder + "/" + kInboxTag;
}

std::string DeletedKey(const std::string& messages_folder) {
  return messages_folder + "/" + kDeletedTag;
}

void FillFolderTree(TreeView& tree, const std::string& messages_folder, const FolderImages& images,
                    const TroubleSink& trouble) {
  tree.Clear();
  const std::string root_key = messages_folder + "/";
  TreeNode* root = tree.Add("", root_key, "Recorded Messages", images.root);
  root->expanded = true;
  root->tag = kRootTag;
  tree.Add(root_key, InboxKey(messages_folder), kInboxTag, images.inbox)->tag = kInboxTag;
  tree.Add(root_key, DeletedKey(messages_folder), kDeletedTag, images.deleted)->tag = kDeletedTag;
  TreeBuilder{tree, images, trouble}.AddSubFolders(messages_folder);
  tree.Changed();
}

} // namespace kelmio

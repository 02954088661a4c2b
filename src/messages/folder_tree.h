// The message folders as a tree, for every window that shows them.
#pragma once

#include <string>

#include "controls/tree_view.h"
#include "core/trouble.h"

namespace kelmio {

inline constexpr const char* kRootTag = "Root";
inline constexpr const char* kInboxTag = "Inbox";
inline constexpr const char* kDeletedTag = "Deleted";
inline constexpr const char* kUserFolderTag = "Folder";

/// Whether a node is one of the three that can be neither renamed nor deleted.
bool IsFixedFolder(const TreeNode& node);

/// Numbers in the image list of the window.
struct FolderImages {
  int root = 1;
  int inbox = 1;
  int deleted = 1;
  int user_folder = 1;
};

/// The inbox's key, which is also its path. `messages_folder` is the message root without a closing separator.
std::string InboxKey(const std::string& messages_folder);
/// Where deleted messages go, and its key.
std::string DeletedKey(const std::string& messages_folder);

/// Builds the tree anew from the disk; no node is selected then. A node's key is the path of its folder: with a
/// closing separator, but for the inbox and the deleted messages, so that a folder below one of these two finds no
/// parent. The building stops there, and `trouble` hears of it.
/// Only plain folders that may be written to are shown, in the order of their names: no hidden ones and no links.
void FillFolderTree(TreeView& tree, const std::string& messages_folder, const FolderImages& images,
                    const TroubleSink& trouble);

} // namespace kelmio

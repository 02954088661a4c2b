// Making, renaming and deleting message folders.
#pragma once

#include <string>

#include "core/trouble.h"
#include "messages/frmFolders.h"
#include "messages/store/message_store.h"
#include "platform/dialogs.h"

namespace kelmio {

class MessageList;

/// User interface thread only. What fails ends its step; the sink hears of it and no box shows. No folder outside
/// the message root is made, renamed or deleted.
class MessageFolders {
public:
  struct House {
    MessageStore& messages;
    MessageList& list;
    frmFolders& folders;
    MessageBoxes& boxes;
    Windows& windows;
    Form& main_window; // owner of the small windows
    TroubleSink trouble;
  };
  explicit MessageFolders(House house);

  /// Asks for a name and makes a folder below the context node's.
  void NewMessagesFolder();
  /// Asks for a new name for the context node's folder. The folder on show keeps its path: if it was the renamed
  /// one, it is gone and shows empty.
  void RenameMessagesFolder();
  /// Deletes the folder selected in the tree, after two questions.
  void DeleteMessagesFolder();

private:
  bool MakeFolder(const std::string& above, const std::string& name);
  bool RenameFolder(const TreeNode& node, const std::string& name);
  /// The plain form of a path; empty when it doesn't lie below the message root.
  std::string PathBelowRoot(const std::string& path) const;
  bool Confirmed(const char* text, const char* title);
  void Refresh();

  House house_;
};

} // namespace kelmio

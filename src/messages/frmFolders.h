// The folder pane: the tree of message folders.
#pragma once

#include <optional>
#include <string>

#include "controls/command_bars.h"
#include "controls/form.h"
#include "controls/tree_view.h"
#include "core/trouble.h"
#include "messages/store/message_store.h"

namespace kelmio {

/// The commands of the tree's popup.
inline constexpr int kCommandNewFolder = 150;
inline constexpr int kCommandRenameFolder = 151;
inline constexpr int kCommandDeleteFolder = 152;

/// What the pane asks of the window around it. User interface thread only.
class FolderHost {
public:
  virtual ~FolderHost() = default;
  /// The name of the folder on show, for `MsgsTitleCaption`.
  virtual void SetFolderCaption(const std::string& name) = 0;
  virtual void RefreshMessageList() = 0;
  /// Moves the selected messages to the folder of that path.
  virtual void MoveDragedMessages(const std::string& target) = 0;
  /// The tree's popup from the table of commands, all enabled.
  virtual CommandBar BuildFolderPopup() const = 0;
  /// Opens the popup at the pointer; `popup` lives as long as the pane.
  virtual void ShowFolderPopup(const CommandBar& popup) = 0;
};

/// User interface thread only. Store and host must live as long.
class frmFolders : public Form {
public:
  frmFolders(MessageStore& messages, FolderHost& host, TroubleSink trouble = NoTroubleSink());

  TreeView twvFolders;

  /// Builds the tree and selects the inbox.
  void Load() override;
  /// Builds the tree anew; no node is selected then, and the inbox is the context node.
  void RefreshFolders();

  /// The node of the last right click; the inbox after a refresh. Nothing before the first one.
  const TreeNode* ContextNode() const { return twvFolders.Find(context_key_); }
  /// Tag of the selected node; nothing when none is selected.
  std::optional<std::string> SelectedFolderTag() const;

  std::string_view Name() const override { return "frmFolders"; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void twvFolders_MouseUp(TreeView::MouseButton button, const TreeNode* node);
  void twvFolders_DragDrop(const TreeNode* node, bool has_text);
  void ShowSelectedFolder();
  void ShowPopup(const TreeNode& node);

  MessageStore& messages_;
  FolderHost& host_;
  TroubleSink trouble_;
  std::string context_key_;
  CommandBar popup_;
};

} // namespace kelmio

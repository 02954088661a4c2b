#include "messages/frmFolders.h"

#include "messages/folder_tree.h"

namespace kelmio {

namespace {

constexpr FolderImages kImages = {.root = 2, .inbox = 3, .deleted = 4, .user_folder = 7};

} // namespace

frmFolders::frmFolders(MessageStore& messages, FolderHost& host, TroubleSink trouble)
    : messages_(messages), host_(host), trouble_(std::move(trouble)) {
  Caption = "Folders";
  twvFolders.MouseUp = [this](TreeView::MouseButton button, const TreeNode* node) { twvFolders_MouseUp(button, node); };
  // Who walks the tree by keys sees each folder too, so that the list never shows another than the selected one.
  twvFolders.NodeClick = [this] { ShowSelectedFolder(); };
  twvFolders.DragOver = [this](const TreeNode* node) {
    if (node != nullptr)
      twvFolders.DropHighlight = node->key;
  };
  twvFolders.DragDrop = [this](const TreeNode* node, bool has_text) { twvFolders_DragDrop(node, has_text); };
}

void frmFolders::Load() {
  RefreshFolders();
  twvFolders.Select(InboxKey(messages_.MessagesFolder()));
  host_.SetFolderCaption(twvFolders.SelectedNode()->text);
}

void frmFolders::RefreshFolders() {
  context_key_ = InboxKey(messages_.MessagesFolder());
  FillFolderTree(twvFolders, messages_.MessagesFolder(), kImages, trouble_);
}

std::optional<std::string> frmFolders::SelectedFolderTag() const {
  const TreeNode* node = twvFolders.SelectedNode();
  return node == nullptr ? std::nullopt : std::optional(node->tag);
}

void frmFolders::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("twvFolders", twvFolders);
}

void frmFolders::twvFolders_MouseUp(TreeView::MouseButton button, const TreeNode* node) {
  if (node == nullptr)
    return;
  if (button == TreeView::MouseButton::Left)
    ShowSelectedFolder();
  else
    ShowPopup(*node);
}

void frmFolders::ShowSelectedFolder() {
  const TreeNode* node = twvFolders.SelectedNode();
  if (node == nullptr)
    return;
  const std::string name = node->text; // the refresh lets events run, and one of them may build the tree anew
  messages_.SetCurrentFolder(node->key);
  host_.RefreshMessageList();
  host_.SetFolderCaption(name);
}

void frmFolders::ShowPopup(const TreeNode& node) {
  context_key_ = node.key;
  const bool may_change = !IsFixedFolder(node);
  popup_ = host_.BuildFolderPopup();
  EnablePopupButton(popup_, kCommandRenameFolder, may_change);
  EnablePopupButton(popup_, kCommandDeleteFolder, may_change);
  host_.ShowFolderPopup(popup_);
}

void frmFolders::twvFolders_DragDrop(const TreeNode* node, bool has_text) {
  if (node == nullptr)
    return;
  const std::string target = node->key;
  twvFolders.DropHighlight = "";
  if (has_text)
    host_.MoveDragedMessages(target);
}

} // namespace kelmio

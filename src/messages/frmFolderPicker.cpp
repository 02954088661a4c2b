#include "messages/frmFolderPicker.h"

#include "messages/folder_tree.h"

namespace kelmio {

frmFolderPicker::frmFolderPicker(const std::string& caption, const std::string& messages_folder, std::string& target,
                                 TroubleSink trouble)
    : messages_folder_(messages_folder), target_(target), trouble_(std::move(trouble)) {
  Caption = caption;
  cmdOK.Caption = "OK";
  cmdCancel.Caption = "Cancel";
  twvFolders.NodeClick = [this] { twvFolders_Click(); };
  twvFolders.MouseUp = [this](TreeView::MouseButton, const TreeNode*) { twvFolders_Click(); };
  cmdOK.Click = [this] { cmdOK_Click(); };
  cmdCancel.Click = [this] { cmdCancel_Click(); };
}

void frmFolderPicker::RefreshFolders() {
  FillFolderTree(twvFolders, messages_folder_, FolderImages{}, trouble_);
}

void frmFolderPicker::Load() {
  RefreshFolders();
  target_.clear();
  twvFolders.Select(InboxKey(messages_folder_));
}

void frmFolderPicker::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("twvFolders", twvFolders);
  visitor.Visit("cmdOK", cmdOK);
  visitor.Visit("cmdCancel", cmdCancel);
}

void frmFolderPicker::twvFolders_Click() {
  const TreeNode* node = twvFolders.SelectedNode();
  cmdOK.Enabled = node == nullptr || node->tag != kRootTag;
}

void frmFolderPicker::cmdOK_Click() {
  if (const TreeNode* node = twvFolders.SelectedNode())
    target_ = node->key;
  Visible = false;
}

void frmFolderPicker::cmdCancel_Click() {
  target_.clear();
  Visible = false;
}

} // namespace kelmio

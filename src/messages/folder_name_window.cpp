#include "messages/folder_name_window.h"

#include "core/text.h"

namespace kelmio {

FolderNameWindow::FolderNameWindow(const std::string& caption, const std::string& label, std::string old_name,
                                   std::function<bool(const std::string& name)> take)
    : old_name_(std::move(old_name)), take_(std::move(take)) {
  Caption = caption;
  lblName.Caption = label;
  cmdOK.Caption = "OK";
  cmdCancel.Caption = "Cancel";
  cmdOK.Click = [this] { cmdOK_Click(); };
  cmdCancel.Click = [this] { Visible = false; };
}

void FolderNameWindow::Load() {
  txtName.Text = old_name_;
}

void FolderNameWindow::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("lblName", lblName);
  visitor.Visit("txtName", txtName);
  visitor.Visit("cmdOK", cmdOK);
  visitor.Visit("cmdCancel", cmdCancel);
}

void FolderNameWindow::cmdOK_Click() {
  const std::string name(Trimmed(txtName.Text.Get()));
  if (name.empty() || name == old_name_ || take_(name))
    Visible = false;
}

} // namespace kelmio

// The two small windows that ask for the name of a message folder.
#pragma once

#include <functional>
#include <string>

#include "controls/basic_controls.h"
#include "controls/form.h"

namespace kelmio {

/// User interface thread only.
class FolderNameWindow : public Form {
public:
  Label lblName;
  TextBox txtName;
  Button cmdOK;
  Button cmdCancel;

  void Load() override;
  void EscapePressed() override { Visible = false; }
  void VisitControls(ControlVisitor& visitor) override;

protected:
  /// `take` is given a name that isn't blank, without blanks at its ends, and that differs from `old_name`. False
  /// leaves the window open.
  FolderNameWindow(const std::string& caption, const std::string& label, std::string old_name,
                   std::function<bool(const std::string& name)> take);

private:
  void cmdOK_Click();

  std::string old_name_;
  std::function<bool(const std::string& name)> take_;
};

class frmNewMsgFolder : public FolderNameWindow {
public:
  explicit frmNewMsgFolder(std::function<bool(const std::string& name)> take)
      : FolderNameWindow("Create New Folder", "New Folder Name:", "", std::move(take)) {}
  std::string_view Name() const override { return "frmNewMsgFolder"; }
};

class frmRenameMsgFolder : public FolderNameWindow {
public:
  frmRenameMsgFolder(std::string old_name, std::function<bool(const std::string& name)> take)
      : FolderNameWindow("Rename Folder", "Folder Name:", std::move(old_name), std::move(take)) {}
  std::string_view Name() const override { return "frmRenameMsgFolder"; }
};

} // namespace kelmio

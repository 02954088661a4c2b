// A small window that asks for a message folder, for copying and for moving.
#pragma once

#include <string>

#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/tree_view.h"
#include "core/trouble.h"

namespace kelmio {

/// User interface thread only. The choice goes to `target` as a full path; it is empty when the user gives up.
class frmFolderPicker : public Form {
public:
  TreeView twvFolders;
  Button cmdOK;
  Button cmdCancel;

  void RefreshFolders();

  void Load() override;
  void EscapePressed() override { Visible = false; }
  void VisitControls(ControlVisitor& visitor) override;

protected:
  /// `messages_folder` is the message root without a closing separator.
  frmFolderPicker(const std::string& caption, const std::string& messages_folder, std::string& target,
                  TroubleSink trouble);

private:
  void twvFolders_Click();
  void cmdOK_Click();
  void cmdCancel_Click();

  std::string messages_folder_;
  std::string& target_;
  TroubleSink trouble_;
};

class frmCopy : public frmFolderPicker {
public:
  frmCopy(const std::string& messages_folder, std::string& CopyTargetFolder, TroubleSink trouble)
      : frmFolderPicker("Copy", messages_folder, CopyTargetFolder, std::move(trouble)) {}
  std::string_view Name() const override { return "frmCopy"; }
};

class frmMove : public frmFolderPicker {
public:
  frmMove(const std::string& messages_folder, std::string& MoveTargetFolder, TroubleSink trouble)
      : frmFolderPicker("Move", messages_folder, MoveTargetFolder, std::move(trouble)) {}
  std::string_view Name() const override { return "frmMove"; }
};

} // namespace kelmio

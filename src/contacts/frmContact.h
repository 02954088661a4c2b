// The window that adds or edits one contact.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "contacts/frmContactAdd.h"
#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/tab_control.h"
#include "core/app_state.h"
#include "core/trouble.h"
#include "platform/dialogs.h"
#include "platform/image.h"

namespace kelmio {

/// Its opener says in `AppState` what to do: `CurrentContactID`, the presets and `ContactOpenedExternally`. They are
/// taken when the window loads: another editor, opened through the tray meanwhile, doesn't change what this one writes.
/// It works on the contact file, not on the table. User interface thread only; what is in `House` outlives it.
class frmContact : public Form {
public:
  struct House {
    AppState& app;
    MessageBoxes& boxes;
    ImageCodec& images;
    FilePicker& file_picker;
    TroubleSink trouble;
    std::function<void()> reload_list; // of the contact list that has opened the window; may be empty elsewhere
  };
  explicit frmContact(House house);

  TabControl TabControl1;
  frmContactAdd Page;
  Button cmdOK;
  Button cmdCancel;

  /// Fills the page from the section of that number; OK still writes where the opener said.
  void LoadEditContact(std::int32_t ContactID);
  /// Has no effect: there is one tab only.
  void RefreshTabs() {}

  std::string_view Name() const override { return "frmContact"; }
  void Load() override;
  void EscapePressed() override;
  bool QueryUnload() override { return saving_; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void cmdOK_Click();
  void FillPage(const std::string& contact_id);
  void Save();
  void KeepPhoto() const;

  House house_;
  std::string contact_id_;
  bool is_new_ = false;
  bool opened_externally_ = false;
  bool saving_ = false;
};

} // namespace kelmio

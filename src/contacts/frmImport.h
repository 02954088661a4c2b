// The window that copies an address book into the contact file.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "contacts/store/contact_table.h"
#include "controls/basic_controls.h"
#include "controls/form.h"
#include "core/app_state.h"
#include "core/trouble.h"
#include "platform/address_book.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"

namespace kelmio {

/// Once begun, the import runs to its end, and the window closes by itself. User interface thread only; what is in
/// `House` outlives it.
class frmImport : public Form {
public:
  struct House {
    const AppState& app;
    const ContactTable& contacts;
    EventLoop& loop;
    FilePicker& file_picker;
    AddressBooks& address_books;
    TroubleSink trouble;
    std::function<void()> refresh_list; // `RefreshContactList` of the contact list
  };
  explicit frmImport(House house);

  ComboBox cboSource;
  ProgressBar pbProgressBar;
  Button cmdOK;
  Button cmdCancel;

  /// Copies all contacts of the chosen source that the contact table, as it stands at the beginning, doesn't have:
  /// none of them equal in name and the four telephone numbers. Contacts in the file are never changed. Pending events
  /// run between the items. No failure is shown.
  void ImportAddressBook();
  /// Name of the logged-on user; empty when the system knows none. Nothing uses it.
  static std::string UserName();

  std::string_view Name() const override { return "frmImport"; }
  void Load() override;
  void EscapePressed() override;
  bool QueryUnload() override { return running_; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void cmdOK_Click();
  bool FromFile() const;
  /// Null when the source doesn't answer.
  std::unique_ptr<AddressBook> OpenSource();
  void SetRunning(bool running);

  House house_;
  std::string file_; // chosen by the user
  bool running_ = false;
};

} // namespace kelmio

// The list of all contacts, with what can be done to them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "contacts/store/contact_table.h"
#include "controls/basic_controls.h"
#include "controls/command_bars.h"
#include "controls/form.h"
#include "controls/list_view.h"
#include "controls/timer.h"
#include "core/app_state.h"
#include "core/settings.h"
#include "core/trouble.h"
#include "platform/address_book.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/image.h"
#include "platform/registry_store.h"

namespace kelmio {

/// Command numbers of the contact list.
namespace command {
inline constexpr int kContactAdd = 701;
inline constexpr int kContactEdit = 702;
inline constexpr int kContactDelete = 703;
inline constexpr int kContactImport = 704;
inline constexpr int kContactsClose = 705;
} // namespace command

/// Each refresh loads and sorts the contact table, which is also what brings the caller lookup up to date. User
/// interface thread only; what is in `House` outlives the window.
class frmContacts : public Form {
public:
  struct House {
    AppState& app;
    Settings& settings;
    RegistryStore& registry;
    ContactTable& contacts;
    EventLoop& loop;
    TimerService& timers;
    Windows& windows;
    MessageBoxes& boxes;
    FilePicker& file_picker;
    ImageCodec& images;
    AddressBooks& address_books;
    TroubleSink trouble;
  };
  explicit frmContacts(House house);

  CommandBars CommandBars1;
  ListView lvwContacts;
  StatusBar sbStatusBar;
  Timer tmrLoaded;

  /// The refresh that the user sees: with the hourglass and the texts of the status bar.
  void ReloadContactList();
  /// Pending events run while the list fills. One that refills it goes first: what it has filled stays.
  void RefreshContactList();
  /// The selected rows, after two questions.
  void DeleteContacts();
  /// The contact's section and its photo.
  void DeleteContact(const std::string& ContactID) { DeleteAll({ContactID}); }

  std::string_view Name() const override { return "frmContacts"; }
  void Load() override;
  void EscapePressed() override { Visible = false; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void CreateColumns();
  void ExecuteCommand(int id);
  void tmrLoaded_Timer();
  void lvwContacts_ColumnClick(std::size_t column);
  void lvwContacts_DblClick();
  void lvwContacts_MouseUp(ListView::MouseButton button);
  void AddContact();
  void EditContact();
  void OpenEditor();
  void ImportContacts();
  bool Asked(const char* text, const char* title) const;
  /// As one change of the file, however many they are.
  void DeleteAll(const std::vector<std::string>& contact_ids);

  House house_;
  std::uint64_t fillings_ = 0;
};

} // namespace kelmio

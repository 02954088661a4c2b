#include "contacts/frmContacts.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "contacts/frmContact.h"
#include "contacts/frmImport.h"
#include "core/mGeneral.h"

namespace kelmio {

namespace {

constexpr int kLoadDelayMs = 5;
constexpr std::size_t kRowsBetweenPumps = 20;
constexpr std::size_t kPanelActivity = 1;
constexpr std::size_t kPanelCount = 2;

/// What a row shows behind its number.
ListRow RowOf(const ContactRecord& contact) {
  ListRow row;
  row.tag = contact.ContactID;
  // The last column is headed "Fax" and shows the business telephone: that is how it has always been.
  row.cells = {contact.Name, contact.Phone, contact.Mobile, contact.Company, contact.BusinessPhone};
  return row;
}

CommandItem Command(int id, const char* caption, bool begins_group = false) {
  CommandItem item;
  item.id = id;
  item.caption = caption;
  item.begins_group = begins_group;
  return item;
}

CommandBar StandardToolBar() {
  CommandBar bar;
  bar.title = "Standard";
  bar.items = {Command(command::kContactAdd, "Add"), Command(command::kContactEdit, "Edit"),
               Command(command::kContactDelete, "Delete"), Command(command::kContactImport, "Import", true),
               Command(command::kContactsClose, "Close", true)};
  return bar;
}

} // namespace

frmContacts::frmContacts(House house) : tmrLoaded(house.timers, kLoadDelayMs), house_(std::move(house)) {
  Caption = "Contacts";
  CommandBars1.ToolBars().push_back(StandardToolBar());
  CommandBars1.Execute = [this](int id) { ExecuteCommand(id); };
  CreateColumns();
  sbStatusBar.AddPanel(StatusBar::PanelKind::Text, "");
  sbStatusBar.AddPanel(StatusBar::PanelKind::Text, "");
  tmrLoaded.Tick = [this] { tmrLoaded_Timer(); };
  lvwContacts.ColumnClick = [this](std::size_t column) { lvwContacts_ColumnClick(column); };
  lvwContacts.DblClick = [this] { lvwContacts_DblClick(); };
  lvwContacts.MouseUp = [this](ListView::MouseButton button) { lvwContacts_MouseUp(button); };
  lvwContacts.DeleteKey = [this] { DeleteContacts(); };
}

void frmContacts::CreateColumns() {
  lvwContacts.AddColumn({"#", 600});
  lvwContacts.AddColumn({"Full Name", 2000});
  lvwContacts.AddColumn({"Phone Number", 2000});
  lvwContacts.AddColumn({"Mobile Number", 2100});
  lvwContacts.AddColumn({"Company", 1200});
  lvwContacts.AddColumn({"Fax", 1200});
}

void frmContacts::Load() {
  tmrLoaded.SetEnabled(true); // the window is on the screen before its list fills
}

void frmContacts::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("CommandBars", CommandBars1);
  visitor.Visit("lvwContacts", lvwContacts);
  visitor.Visit("sbStatusBar", sbStatusBar);
}

void frmContacts::ReloadContactList() {
  Busy = true;
  house_.loop.RunPending();
  sbStatusBar.SetPanel(kPanelActivity, "Loading contacts. Please wait...");
  house_.loop.RunPending();
  RefreshContactList();
  house_.loop.RunPending();
  sbStatusBar.SetPanel(kPanelActivity, "Ready");
  sbStatusBar.SetPanel(kPanelCount, std::to_string(house_.contacts.ContactCount()) + " Contacts");
  house_.loop.RunPending();
  Busy = false;
}

void frmContacts::RefreshContactList() {
  const std::uint64_t filling = ++fillings_;
  house_.contacts.LoadContacts();
  house_.contacts.SortContacts(house_.settings.ContactSortBy);
  lvwContacts.Clear();
  if (house_.contacts.ContactCount() < 1)
    return;
  // Whoever comes in while events run may load the table anew, another contact list for one: the rows are taken first.
  std::vector<ListRow> rows;
  rows.reserve(house_.contacts.Contacts().size());
  for (const ContactRecord& contact : house_.contacts.Contacts())
    rows.push_back(RowOf(contact));
  for (std::size_t index = 0; index < rows.size(); ++index) {
    ListRow& row = lvwContacts.AddRow({std::to_string(index + 1)});
    // Before events run: the user may already act on the row.
    row.tag = std::move(rows[index].tag);
    row.cells.insert(row.cells.end(), rows[index].cells.begin(), rows[index].cells.end());
    if (index % kRowsBetweenPumps != 0)
      continue;
    house_.loop.RunPending();
    if (filling != fillings_)
      return; // the list has been filled meanwhile
  }
}

void frmContacts::DeleteContacts() {
  if (lvwContacts.RowCount() == 0)
    return;
  if (!Asked("Are you sure you want to permanently delete these contact(s)?", "Delete Contact(s)") ||
      !Asked("Please note this action can not be undone. Are you sure you still want to permanently delete these "
             "contact(s)?",
             "Confirm Contact(s) Delete"))
    return;
  std::vector<std::string> contact_ids;
  for (std::size_t row = lvwContacts.RowCount(); row >= 1; --row)
    if (std::as_const(lvwContacts).Row(row).selected)
      contact_ids.push_back(std::as_const(lvwContacts).Row(row).tag);
  if (contact_ids.empty())
    return;
  DeleteAll(contact_ids);
  ReloadContactList();
}

bool frmContacts::Asked(const char* text, const char* title) const {
  constexpr int kNo = 2;
  return house_.boxes.Show(text, title, BoxButtons::YesNoCancel, BoxIcon::Warning, kNo) == BoxAnswer::Yes;
}

void frmContacts::DeleteAll(const std::vector<std::string>& contact_ids) {
  if (!DeleteContactSections(contact_ids, house_.app.ContactsFile)) {
    house_.trouble(NotWritten(house_.app.ContactsFile));
    return; // contacts that stay keep their photos
  }
  for (const std::string& contact_id : contact_ids) {
    const std::string photo = ContactPhotoFile(house_.app.PhotosFolder, contact_id);
    if (!mGeneral::FileExists(photo))
      continue;
    std::error_code error;
    if (!std::filesystem::remove(photo, error))
      house_.trouble("Could not delete \"" + photo + "\".");
  }
}

void frmContacts::ExecuteCommand(int id) {
  switch (id) {
  case command::kContactAdd:
    return AddContact();
  case command::kContactEdit:
    return EditContact();
  case command::kContactDelete:
    return DeleteContacts();
  case command::kContactImport:
    return ImportContacts();
  case command::kContactsClose:
    Visible = false;
    return;
  default:
    return;
  }
}

void frmContacts::tmrLoaded_Timer() {
  tmrLoaded.SetEnabled(false);
  ReloadContactList();
}

void frmContacts::lvwContacts_ColumnClick(std::size_t column) {
  for (std::size_t each = 1; each <= lvwContacts.Columns().size(); ++each)
    lvwContacts.SetColumnIcon(each, "");
  const int sort_by = static_cast<int>(column);
  // The arrow points the way the texts grow: down for the smallest first.
  if (house_.settings.ContactSortBy != sort_by) {
    house_.settings.ContactSortBy = sort_by;
    lvwContacts.SetColumnIcon(column, kIconDescending);
  } else {
    house_.settings.ContactSortBy = -sort_by;
    lvwContacts.SetColumnIcon(column, kIconAscending);
  }
  SaveSetting(house_.settings, house_.registry, "ContactSortBy");
  ReloadContactList();
}

void frmContacts::lvwContacts_DblClick() {
  const std::size_t row = lvwContacts.SelectedRow();
  if (row == 0)
    return;
  // `ContactOpenedExternally` stays as the last opener has left it.
  house_.app.CurrentContactID = std::as_const(lvwContacts).Row(row).tag;
  OpenEditor();
}

void frmContacts::lvwContacts_MouseUp(ListView::MouseButton button) {
  if (button != ListView::MouseButton::Right)
    return;
  for (const ListRow& row : lvwContacts.Rows())
    if (row.selected) {
      CommandBar popup;
      popup.title = "Popup"; // it has no entries
      CommandBars1.ShowPopup(popup);
      return;
    }
}

void frmContacts::AddContact() {
  // The presets stay as the last opener from elsewhere has left them.
  house_.app.CurrentContactID.clear();
  house_.app.ContactOpenedExternally = false;
  OpenEditor();
}

void frmContacts::EditContact() {
  const std::size_t row = lvwContacts.SelectedRow();
  if (row == 0)
    return;
  house_.app.CurrentContactID = std::as_const(lvwContacts).Row(row).tag;
  house_.app.ContactOpenedExternally = false;
  OpenEditor();
}

void frmContacts::OpenEditor() {
  frmContact editor(
      {house_.app, house_.boxes, house_.images, house_.file_picker, house_.trouble, [this] { ReloadContactList(); }});
  house_.windows.ShowModal(editor, this);
}

void frmContacts::ImportContacts() {
  frmImport import({house_.app, house_.contacts, house_.loop, house_.file_picker, house_.address_books, house_.trouble,
                    [this] { RefreshContactList(); }});
  house_.windows.ShowModal(import, this);
}

} // namespace kelmio

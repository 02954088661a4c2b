#include "contacts/frmContact.h"

#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "core/ini_document.h"
#include "core/mGeneral.h"
#include "core/text.h"

namespace kelmio {

frmContact::frmContact(House house) : Page(house.images, house.file_picker), house_(std::move(house)) {
  Caption = "Contact";
  cmdOK.Caption = "OK";
  cmdCancel.Caption = "Cancel";
  TabControl1.AddPage("Properties", Page);
  cmdOK.Click = [this] { cmdOK_Click(); };
  cmdCancel.Click = [this] { Visible = false; };
}

void frmContact::Load() {
  RefreshTabs();
  AppState& app = house_.app;
  opened_externally_ = app.ContactOpenedExternally;
  is_new_ = app.CurrentContactID.empty();
  if (is_new_) {
    app.CurrentContactID = NextFreeContactID(app.ContactsFile);
    Page.txtFullName.Text = app.NewContactName;
    Page.txtHomePhone.Text = app.NewContactPhone;
  }
  contact_id_ = app.CurrentContactID;
  if (!is_new_) {
    // Someone who edits the file by hand may call a section "abc" or "007". Such a contact is edited under that very
    // name: taken as a number it would be no contact, or another one.
    const std::optional<std::int32_t> number = NumberOfText(contact_id_);
    if (number && std::to_string(*number) == contact_id_)
      LoadEditContact(*number);
    else
      FillPage(contact_id_);
  }
  Page.txtFullName.SetFocus();
}

void frmContact::LoadEditContact(std::int32_t ContactID) {
  FillPage(std::to_string(ContactID));
}

void frmContact::EscapePressed() {
  if (!saving_)
    Visible = false;
}

void frmContact::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("TabControl", TabControl1);
  visitor.Visit("cmdOK", cmdOK);
  visitor.Visit("cmdCancel", cmdCancel);
}

void frmContact::cmdOK_Click() {
  Page.txtFullName.Text = std::string(Trimmed(Page.txtFullName.Text.Get()));
  if (Page.txtFullName.Text.Get().empty()) {
    house_.boxes.Show("Full name field is empty", "Kelmio Standard", BoxButtons::Ok, BoxIcon::Warning, 1);
    Page.txtFullName.SetFocus();
    return;
  }
  cmdOK.Enabled = false;
  cmdCancel.Enabled = false;
  saving_ = true;
  Busy = true;
  Save();
  if (!opened_externally_ && house_.reload_list)
    house_.reload_list();
  Busy = false;
  saving_ = false;
  Visible = false;
}

void frmContact::FillPage(const std::string& contact_id) {
  Page.ShowContact(ReadContact(IniDocument::Load(house_.app.ContactsFile), contact_id));
  const std::string photo = ContactPhotoFile(house_.app.PhotosFolder, contact_id);
  if (mGeneral::FileExists(photo))
    Page.ShowStoredPhoto(photo);
}

void frmContact::Save() {
  const std::string& file = house_.app.ContactsFile;
  if (!is_new_) {
    KeepPhoto();
    if (!WriteContact(Page.Contact(contact_id_), file))
      house_.trouble(NotWritten(file));
    return;
  }
  // The photo of a new contact comes last: only now is it known whose it is, and a crash in between leaves no photo for
  // the next contact to inherit.
  const std::optional<std::string> contact_id = WriteNewContact(Page.Contact(contact_id_), file);
  if (!contact_id) {
    house_.trouble(NotWritten(file));
    return;
  }
  contact_id_ = *contact_id;
  house_.app.CurrentContactID = contact_id_;
  KeepPhoto();
}

void frmContact::KeepPhoto() const {
  const std::string photo = ContactPhotoFile(house_.app.PhotosFolder, contact_id_);
  switch (Page.picPhotoTag) {
  case PhotoTag::None:
  case PhotoTag::Exist:
    break;
  case PhotoTag::Add:
    if (photo.empty() || !house_.images.SaveBitmap(Page.picPhoto.Drawing, photo))
      house_.trouble("Could not write the photo of \"" + contact_id_ + "\".");
    break;
  case PhotoTag::Delete:
    if (mGeneral::FileExists(photo)) {
      std::error_code error;
      if (!std::filesystem::remove(photo, error))
        house_.trouble("Could not delete \"" + photo + "\".");
    }
    break;
  }
}

} // namespace kelmio

// The windows that the main window opens, and what their links lead to.
#include "calls/frmCallLog.h"
#include "calls/modToneBox.h"
#include "contacts/frmContact.h"
#include "contacts/frmContacts.h"
#include "core/mGeneral.h"
#include "messages/frmOpen.h"
#include "settings_ui/frmSettings.h"
#include "shell/frmMain.h"

namespace kelmio {

void frmMain::OpenSelectedMessage() {
  if (lvwCalls.SelectedRow() == 0)
    return;
  frmOpen open(message_list_, {house_.app, contacts_}, *this);
  house_.windows.ShowModal(open, this);
}

void frmMain::OpenContacts() {
  frmContacts contacts({house_.app, house_.settings, house_.registry, contacts_, house_.loop, house_.timers,
                        house_.windows, house_.boxes, house_.file_picker, house_.images, house_.address_books,
                        Trouble()});
  house_.windows.ShowModal(contacts, this);
}

void frmMain::OpenCallLog() {
  frmCallLog call_log({house_.app, call_log_, *this, house_.loop});
  house_.windows.ShowModal(call_log, this);
}

void frmMain::ShowDialer(Form* owner, frmDialer::Place place) {
  frmDialer dialer({house_.app, house_.settings, house_.registry, Context, *this, house_.lines, house_.loop,
                    house_.timers, house_.clipboard, house_.file_picker, house_.wave_images},
                   place);
  house_.windows.ShowModal(dialer, owner);
}

void frmMain::OpenDialer(Form& owner) {
  ShowDialer(&owner, frmDialer::Place::OverOwner);
}

void frmMain::OpenContactEditor(Form& owner) {
  frmContact editor({house_.app, house_.boxes, house_.images, house_.file_picker, Trouble(), {}});
  house_.windows.ShowModal(editor, &owner);
}

void frmMain::AddToContacts() {
  const MessageRecord* message = message_list_.SelectedMessage();
  if (message == nullptr)
    return;
  house_.app.ContactOpenedExternally = true;
  house_.app.CurrentContactID.clear();
  house_.app.NewContactName = message->Name;
  house_.app.NewContactPhone = message->Number;
  OpenContactEditor(*this);
}

void frmMain::EditContact() {
  const MessageRecord* message = message_list_.SelectedMessage();
  const std::string contact = message != nullptr ? contacts_.GetMessageContactID(message->Number) : std::string();
  if (contact.empty())
    return;
  house_.app.ContactOpenedExternally = true;
  house_.app.CurrentContactID = contact;
  OpenContactEditor(*this);
}

void frmMain::OpenSettings() {
  frmSettings settings({house_.app, house_.settings, house_.registry, house_.lines, house_.timers, house_.greeting,
                        house_.boxes, house_.file_picker, house_.color_picker, hot_keys_, *this, *this, Trouble()});
  house_.windows.ShowModal(settings, this);
}

void frmMain::SetPreviewColor(Color color) {
  Preview.BackColor = color;
  Preview.picPhoto.BackColor = color;
}

void frmMain::SetOutputColor(Color color) {
  Output.BackColor = color;
  Output.txtOutput.BackColor = color;
}

void frmMain::PlayTonePair(std::int16_t low_frequency, std::int16_t high_frequency, double seconds) {
  modToneBox::PlayTonePair(house_.wave_images, low_frequency, high_frequency, seconds);
}

void frmMain::HotKeyPressed() {
  ShowFromTray();
  SetFocus(); // before all others
}

void frmMain::OpenAddress(const std::string& address) {
  mGeneral::ShellOpen(house_.link_opener, address, "Open", "", "", 0);
}

void frmMain::Dial(const std::string& number) {
  house_.app.DialNumber = number;
  ShowDialer(nullptr, frmDialer::Place::WhereItWas);
}

} // namespace kelmio

// The windows that the main window opens, and what their links lead to.
#include "calls/frmCallLog.h"
#include "calls/modToneBox.h"
#include "contacts/frmContact.h"
#include "contacts/frmContacts.h"
#include "core/mGeneral.h"
#include "core/product.h"
#include "core/text.h"
#include "messages/frmOpen.h"
#include "settings_ui/frmSettings.h"
#include "shell/frmAbout.h"
#include "shell/frmHelp.h"
#include "shell/frmMain.h"
#include "shell/frmPopup.h"

namespace kelmio {

namespace {

/// Colours of the bars as their setting counts them, and the frame's themes that go with them.
constexpr int kOliveBars = 2;
constexpr int kSilverBars = 3;
constexpr int kSilverFrame = 1;
constexpr int kOliveFrame = 2;

} // namespace

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

ErrorLog::House frmMain::FrameErrors() const {
  return {house_.clock, house_.boxes, house_.app_path, product::kName, product::Version()};
}

int frmMain::FrameTheme() const {
  // The frames follow the bars: blue, olive and silver.
  switch (house_.settings.DefaultSystemTheme) {
  case kOliveBars:
    return kOliveFrame;
  case kSilverBars:
    return kSilverFrame;
  default:
    return jcForms::kDesktopColors;
  }
}

void frmMain::OpenHelp() {
  house_.windows.Show(std::make_shared<frmHelp>(frmHelp::House{house_.desktop, house_.link_opener, FrameErrors(),
                                                               ManualAddress(house_.executable), FrameTheme()}),
                      Activation::Takes);
}

void frmMain::OpenAbout() {
  frmAbout about({house_.desktop, house_.link_opener, FrameErrors(), FrameTheme()});
  house_.windows.ShowModal(about, this);
}

void frmMain::OpenWebsite() {
  mGeneral::ShellOpen(house_.link_opener, product::Website(), "Open");
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

void frmMain::ShowNewCallAlert(const std::string& name, const std::string& number) {
  const ContactLookup lookup{house_.app, contacts_};
  std::string photo;
  if (AsciiUpper(number) != "UNKNOWN")
    if (const std::string contact = lookup.ContactOf(number); !contact.empty())
      photo = lookup.PhotoOf(contact);
  const frmPopup::House house{house_.app, house_.settings, house_.loop, house_.timers, house_.windows, house_.surface};
  const auto alert = photo.empty() ? std::make_shared<frmPopup>(house) : std::make_shared<frmPopupPhoto>(house, photo);
  alert->ShowCall(name, number);
}

void frmMain::OpenAddress(const std::string& address) {
  mGeneral::ShellOpen(house_.link_opener, address, "Open", "", "", 0);
}

void frmMain::Dial(const std::string& number) {
  house_.app.DialNumber = number;
  ShowDialer(nullptr, frmDialer::Place::WhereItWas);
}

} // namespace kelmio

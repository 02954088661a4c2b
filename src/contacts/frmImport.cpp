#include "contacts/frmImport.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <limits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "contacts/import_values.h"

namespace kelmio {

namespace {

constexpr const char* kAddressBookFilter = "Address Books (*.vcf, *.csv)|*.vcf;*.vcard;*.csv|"
                                           "vCards (*.vcf)|*.vcf;*.vcard|"
                                           "Comma Separated Values (*.csv)|*.csv|"
                                           "All Files (*.*)|*.*";

} // namespace

frmImport::frmImport(House house) : house_(std::move(house)) {
  Caption = "Import";
  cmdOK.Caption = "Import";
  cmdCancel.Caption = "Cancel";
  cmdOK.Click = [this] { cmdOK_Click(); };
  cmdCancel.Click = [this] { Visible = false; };
}

void frmImport::Load() {
  UserName();
  std::vector<std::string> sources;
  if (house_.address_books.DesktopAnswers())
    sources.emplace_back("Desktop address book");
  sources.emplace_back("A file…");
  cboSource.Items = sources;
  cboSource.ListIndex = 0;
}

void frmImport::EscapePressed() {
  if (!running_)
    Visible = false;
}

void frmImport::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("cboSource", cboSource);
  visitor.Visit("pbProgressBar", pbProgressBar);
  visitor.Visit("cmdOK", cmdOK);
  visitor.Visit("cmdCancel", cmdCancel);
}

void frmImport::ImportAddressBook() {
  const std::unique_ptr<AddressBook> book = OpenSource();
  const std::size_t count = book != nullptr ? book->Count() : 0;
  if (count < 1)
    return;
  pbProgressBar.Max = static_cast<int>(std::min<std::size_t>(count, std::numeric_limits<int>::max()));
  pbProgressBar.Min = 0;
  pbProgressBar.Value = 0;
  // Only what is there now: two equal contacts of one address book are both imported.
  std::unordered_set<std::string> known;
  for (const ContactRecord& contact : house_.contacts.Contacts())
    known.insert(DuplicateKey(contact));
  house_.loop.RunPending();
  const bool shown = Visible;
  ContactBatch batch(house_.app.ContactsFile, house_.trouble);
  for (std::size_t index = 0; index < count; ++index) {
    house_.loop.RunPending();
    if (shown && !Visible)
      break; // the program ends
    ContactValues contact = ValuesOf(book->Item(index));
    if (!known.contains(DuplicateKey(contact)))
      batch.Add(std::move(contact));
    pbProgressBar.Value = static_cast<int>(std::min<std::size_t>(index + 1, std::numeric_limits<int>::max()));
    house_.loop.RunPending();
  }
  batch.Flush();
}

std::string frmImport::UserName() {
  constexpr std::size_t kRoom = 4096; // for all texts of an entry
  std::array<char, kRoom> room{};
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::geteuid(), &entry, room.data(), room.size(), &found) != 0 || found == nullptr)
    return {};
  return found->pw_name;
}

void frmImport::cmdOK_Click() {
  SetRunning(true);
  if (FromFile()) {
    file_ = house_.file_picker.OpenFile("Open Address Book File", kAddressBookFilter);
    if (file_.empty()) {
      SetRunning(false); // for another choice
      return;
    }
  }
  ImportAddressBook();
  house_.refresh_list();
  SetRunning(false);
  Visible = false;
}

bool frmImport::FromFile() const {
  return cboSource.ListIndex + 1 == static_cast<int>(cboSource.Items.Get().size());
}

std::unique_ptr<AddressBook> frmImport::OpenSource() {
  return FromFile() ? house_.address_books.OpenFile(file_) : house_.address_books.OpenDesktop();
}

void frmImport::SetRunning(bool running) {
  running_ = running;
  cmdOK.Enabled = !running;
  cmdCancel.Enabled = !running;
  cboSource.Enabled = !running;
}

} // namespace kelmio

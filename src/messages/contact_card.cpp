#include "messages/contact_card.h"

#include <functional>

#include "core/mGeneral.h"
#include "core/mIni.h"

namespace kelmio {

namespace {

void LinkTo(Label& label, std::function<void(const std::string&)> follow) {
  label.Click = [&label, follow = std::move(follow)] {
    // The window that opens may refill the label.
    const std::string text = label.Caption;
    if (!text.empty())
      follow(text);
  };
}

} // namespace

std::string ContactLookup::Field(const std::string& contact, const char* key) const {
  return mIni::IniRead(contact, key, app.ContactsFile);
}

std::string ContactLookup::PhotoOf(const std::string& contact) const {
  const std::string path = ContactPhotoFile(app.PhotosFolder, contact);
  return mGeneral::FileExists(path) ? path : std::string();
}

void LinkToDial(Label& label, MessageLinks& links) {
  label.ToolTip = kDialToolTip;
  LinkTo(label, [&links](const std::string& number) { links.Dial(number); });
}

void LinkToMail(Label& label, MessageLinks& links) {
  LinkTo(label, [&links](const std::string& address) { links.OpenAddress("mailto:" + address); });
}

void LinkToWebsite(Label& label, MessageLinks& links) {
  LinkTo(label, [&links](const std::string& address) { links.OpenAddress(address); });
}

} // namespace kelmio

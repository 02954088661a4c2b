#include "contacts/store/contact_file.h"

#include "core/ini_document.h"
#include "core/ini_text.h"
#include "core/mIni.h"

namespace kelmio {

namespace {

constexpr std::string_view kNameKey = "Name";

std::string FreeID(const IniDocument& document) {
  for (int number = 1;; ++number) {
    std::string contact_id = std::to_string(number);
    if (document.Read(contact_id, kNameKey).empty())
      return contact_id;
  }
}

void WriteKeys(const ContactRecord& contact, IniText& text) {
  for (const ContactField& field : kContactFields)
    text.Write(contact.ContactID, field.key, contact.*field.member);
}

} // namespace

ContactRecord ReadContact(const IniDocument& file, const std::string& contact_id) {
  ContactRecord contact;
  contact.ContactID = contact_id;
  for (const ContactField& field : kContactFields)
    contact.*field.member = file.Read(contact_id, field.key);
  return contact;
}

bool WriteContact(const ContactRecord& contact, const std::string& file) {
  return mIni::IniChange(file, [&](IniText& text) { WriteKeys(contact, text); });
}

std::optional<std::string> WriteNewContact(ContactRecord contact, const std::string& file) {
  const bool written = mIni::IniChange(file, [&](IniText& text) {
    const IniDocument document(text.Bytes());
    if (!document.Read(contact.ContactID, kNameKey).empty())
      contact.ContactID = FreeID(document);
    WriteKeys(contact, text);
  });
  return written ? std::optional(contact.ContactID) : std::nullopt;
}

std::string NextFreeContactID(const std::string& file) {
  return FreeID(IniDocument::Load(file));
}

bool DeleteContactSections(const std::vector<std::string>& contact_ids, const std::string& file) {
  return mIni::IniChange(file, [&](IniText& text) { text.DeleteSections(contact_ids); });
}

std::string ContactPhotoFile(const std::string& photos_folder, const std::string& contact_id) {
  const bool leads_elsewhere = contact_id.empty() || contact_id.find('/') != std::string::npos;
  return leads_elsewhere ? std::string() : photos_folder + "/" + contact_id + ".bmp";
}

} // namespace kelmio

#include "contacts/store/contact_file.h"

#include <utility>
#include <vector>

#include "core/ini_document.h"
#include "core/mIni.h"

namespace kelmio {

ContactRecord ReadContact(const IniDocument& file, const std::string& contact_id) {
  ContactRecord contact;
  contact.ContactID = contact_id;
  for (const ContactField& field : kContactFields)
    contact.*field.member = file.Read(contact_id, field.key);
  return contact;
}

bool WriteContact(const ContactRecord& contact, const std::string& file) {
  std::vector<std::pair<std::string, std::string>> keys;
  keys.reserve(kContactFields.size());
  for (const ContactField& field : kContactFields)
    keys.emplace_back(field.key, contact.*field.member);
  return mIni::IniWriteSection(contact.ContactID, keys, file);
}

std::string NextFreeContactID(const std::string& file) {
  const IniDocument document = IniDocument::Load(file);
  for (int number = 1;; ++number) {
    std::string contact_id = std::to_string(number);
    if (document.Read(contact_id, "Name").empty())
      return contact_id;
  }
}

} // namespace kelmio

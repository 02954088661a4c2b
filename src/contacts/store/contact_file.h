// The contact file: one section for each contact, and which identifier is free.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelmio {

class IniDocument;

/// One contact. Texts are bytes as they stand in the file.
struct ContactRecord {
  std::string ContactID;
  std::string Name;
  std::string Phone;
  std::string Mobile;
  std::string Email;
  std::string Website;
  std::string BusinessPhone;
  std::string BusinessFax;
  std::string JobTitle;
  std::string Company;
  std::string StreeAddress;
  std::string City;
  std::string State;
  std::string Zip;
  std::string Country;
  bool operator==(const ContactRecord&) const = default;
};

struct ContactField {
  std::string_view key;
  std::string ContactRecord::*member;
};

/// The fourteen keys of a contact in the order in which they are written.
inline constexpr std::array<ContactField, 14> kContactFields = {{
    {"Name", &ContactRecord::Name},
    {"Phone", &ContactRecord::Phone},
    {"Mobile", &ContactRecord::Mobile},
    {"Email", &ContactRecord::Email},
    {"Website", &ContactRecord::Website},
    {"BusinessPhone", &ContactRecord::BusinessPhone},
    {"BusinessFax", &ContactRecord::BusinessFax},
    {"JobTitle", &ContactRecord::JobTitle},
    {"Company", &ContactRecord::Company},
    {"StreeAddress", &ContactRecord::StreeAddress},
    {"City", &ContactRecord::City},
    {"State", &ContactRecord::State},
    {"Zip", &ContactRecord::Zip},
    {"Country", &ContactRecord::Country},
}};

/// The contact of a section; missing keys read as empty texts.
ContactRecord ReadContact(const IniDocument& file, const std::string& contact_id);

/// Writes all fourteen keys, empty ones too, as one change. False when the file could not be written.
bool WriteContact(const ContactRecord& contact, const std::string& file);

/// The same for a contact that was given its identifier a while ago: should another copy of the program have written a
/// contact there since, this one gets the next free identifier instead. Returns the identifier it has; nothing when
/// the file could not be written.
std::optional<std::string> WriteNewContact(ContactRecord contact, const std::string& file);

/// The lowest positive number whose section has no name, as its identifier. The file decides, not a table.
std::string NextFreeContactID(const std::string& file);

/// Deletes the contacts' sections as one change. An identifier given twice takes two sections of that name. False when
/// the file could not be written.
bool DeleteContactSections(const std::vector<std::string>& contact_ids, const std::string& file);

/// Path of a contact's photo, whether there is one or not. Empty for an identifier out of a hand-edited file that would
/// lead out of the folder: such a contact has no photo. `photos_folder` has no closing separator.
std::string ContactPhotoFile(const std::string& photos_folder, const std::string& contact_id);

} // namespace kelmio

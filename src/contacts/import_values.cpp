#include "contacts/import_values.h"

#include <cstddef>
#include <string_view>

#include "core/ini_lines.h"
#include "core/mIni.h"
#include "core/text.h"

namespace kelmio {

namespace {

static_assert(kAddressItemProperties.size() == kContactFields.size());

bool IsControl(char c) {
  constexpr unsigned char kDelete = 0x7F;
  const auto byte = static_cast<unsigned char>(c);
  return byte < ' ' || byte == kDelete;
}

/// A street of two lines becomes "first, second".
std::string OnOneLine(std::string_view text) {
  std::string line;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\r\n");
    std::string part(text.substr(0, end));
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    for (char& c : part)
      if (IsControl(c))
        c = ' ';
    const std::string_view said = TrimIniBlanks(part);
    if (!line.empty() && !said.empty())
      line += ", ";
    line += said;
  }
  return line;
}

} // namespace

ContactValues ValuesOf(const AddressItem& item) {
  ContactValues values;
  for (std::size_t field = 0; field < values.size(); ++field)
    if (const std::optional<std::string>& property = item.*kAddressItemProperties[field])
      values[field] = OnOneLine(*property);
  return values;
}

std::string DuplicateKey(const ContactRecord& contact) {
  std::string key;
  for (const auto member : {&ContactRecord::Name, &ContactRecord::Phone, &ContactRecord::Mobile,
                            &ContactRecord::BusinessPhone, &ContactRecord::BusinessFax}) {
    // As shown: a store that was brought over in Windows-1252 holds the same texts in other bytes.
    key += DisplayText(std::string_view(contact.*member).substr(0, mIni::kValueLimit));
    key += '\n';
  }
  return key;
}

std::string DuplicateKey(const ContactValues& contact) {
  ContactRecord record;
  for (std::size_t field = 0; field < contact.size(); ++field)
    record.*kContactFields[field].member = contact[field].value_or("");
  return DuplicateKey(record);
}

} // namespace kelmio

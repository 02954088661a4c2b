#include "address_books/readers/item_text.h"

#include <utility>

#include "core/text.h"

namespace kelmio {

namespace {

constexpr std::size_t kLongestProperty = 4000;

bool IsContinuationByte(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}
bool IsControl(char byte) {
  return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
}

} // namespace

std::string OneLine(std::string_view text, std::string_view line_break) {
  const std::string shown = DisplayText(text);
  std::string line;
  std::string_view rest = Trimmed(shown, std::string_view(" \t\r\n\v\f\0", 7));
  while (!rest.empty()) {
    const char byte = rest.front();
    if (byte == '\n' || byte == '\r') {
      rest = Trimmed(rest, " \t\r\n");
      line.erase(line.find_last_not_of(' ') + 1);
      line += line_break;
      continue;
    }
    line += IsControl(byte) ? ' ' : byte;
    rest.remove_prefix(1);
  }
  if (line.size() > kLongestProperty) {
    std::size_t end = kLongestProperty;
    while (end > 0 && IsContinuationByte(line[end]))
      --end;
    line.resize(end);
  }
  return line;
}

std::string Joined(std::initializer_list<std::string_view> texts, std::string_view separator) {
  std::string joined;
  for (const std::string_view text : texts) {
    if (text.empty())
      continue;
    if (!joined.empty())
      joined += separator;
    joined += text;
  }
  return joined;
}

std::string FirstOf(std::initializer_list<std::string_view> texts) {
  for (const std::string_view text : texts)
    if (!text.empty())
      return std::string(text);
  return {};
}

AddressItem EmptyItem() {
  return {"", "", "", "", "", "", "", "", "", "", "", "", "", ""};
}

bool HasContent(const AddressItem& item) {
  for (const auto* property :
       {&item.FullName, &item.HomeTelephoneNumber, &item.MobileTelephoneNumber, &item.Email1Address,
        &item.BusinessHomePage, &item.BusinessTelephoneNumber, &item.BusinessFaxNumber, &item.JobTitle,
        &item.CompanyName, &item.BusinessAddressStreet, &item.BusinessAddressCity, &item.BusinessAddressState,
        &item.BusinessAddressPostalCode, &item.BusinessAddressCountry})
    if (!property->value_or("").empty())
      return true;
  return false;
}

std::string WithoutByteOrderMark(std::string bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF"))
    return bytes.substr(3);
  const bool big_endian = bytes.starts_with("\xFE\xFF");
  if (!big_endian && !bytes.starts_with("\xFF\xFE"))
    return bytes;
  if (big_endian)
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2)
      std::swap(bytes[index], bytes[index + 1]);
  return Utf16LeToUtf8(std::string_view(bytes).substr(2));
}

} // namespace kelmio

#pragma once

#include <algorithm>
#include <string>

#include "address_books/item_stream.h"

namespace kelmio::test {

/// All properties of a contact in their order: name, home, mobile, email, page, business phone, fax, title, company,
/// street, city, state, zip, country. "+" before one that is there, "-" for one that isn't.
inline std::string Shown(const AddressItem& item) {
  std::string shown = EncodedItem(item).substr(5);
  std::replace(shown.begin(), shown.end(), '\0', '|');
  return shown;
}

} // namespace kelmio::test

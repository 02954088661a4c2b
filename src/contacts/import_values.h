// An item of an address book as the contact file takes it.
#pragma once

#include <string>

#include "contacts/store/contact_batch.h"
#include "platform/address_book.h"

namespace kelmio {

/// The item's properties as they will read back out of the file: on one line, without control characters and without
/// blanks at the ends. Nothing stays nothing.
ContactValues ValuesOf(const AddressItem& item);

/// Two contacts of the same key are duplicates: name, home, mobile and business telephone and business fax are equal.
std::string DuplicateKey(const ContactRecord& contact);
/// What isn't there counts as empty.
std::string DuplicateKey(const ContactValues& contact);

} // namespace kelmio

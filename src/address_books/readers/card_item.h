// A card of the vCard family as a contact.
#pragma once

#include <libebook-contacts/libebook-contacts.h>

#include <optional>

#include "platform/address_book.h"

/// Any thread.
namespace kelmio {

/// `card` isn't parsed before the first look at it, so it can't be const. A card of a group of people has a name only.
/// Nothing when the card has no content that a contact could have.
std::optional<AddressItem> ItemOfCard(EVCard* card);

} // namespace kelmio

// Address books in files.
#pragma once

#include <string>

#include "address_books/readers/item_text.h"

/// Any thread.
namespace kelmio {

/// Hands over the contacts of the file, whose kind shows in its content. False when it can't be read, is larger than
/// 256 MB, or is no address book; then nothing has been handed over.
bool ReadAddressFile(const std::string& path, const ItemSink& take);

/// The same for a file's bytes: with cards in them, or a table as mail programs export it.
bool ReadAddressBytes(std::string bytes, const ItemSink& take);

} // namespace kelmio

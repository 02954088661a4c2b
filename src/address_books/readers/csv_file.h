// Address books that mail programs export as a table.
#pragma once

#include <string>

#include "address_books/readers/item_text.h"

/// Any thread.
namespace kelmio {

/// Hands over a contact for each row of a table with comma, semicolon or tab between its columns. The columns are known
/// by the names that Outlook, Thunderbird and Google Contacts give them in English. False when fewer than two are
/// known; then nothing has been handed over.
bool ReadCsv(const std::string& text, const ItemSink& take);

} // namespace kelmio

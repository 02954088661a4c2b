// Texts of other programs as properties of a contact.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

#include "platform/address_book.h"

/// Any thread.
namespace kelmio {

/// Takes one contact after the other.
using ItemSink = std::function<void(const AddressItem&)>;

/// `text` as UTF-8 in one line: line breaks become `line_break`, other control characters blanks, and blanks at the
/// ends go. What isn't UTF-8 is read as Windows-1252. No property is longer than 4,000 bytes.
std::string OneLine(std::string_view text, std::string_view line_break = " ");

/// The texts that aren't empty, with `separator` between them.
std::string Joined(std::initializer_list<std::string_view> texts, std::string_view separator);

/// The first that isn't empty, or an empty text.
std::string FirstOf(std::initializer_list<std::string_view> texts);

/// A contact all of whose properties are there and empty.
AddressItem EmptyItem();
/// Whether any property has content.
bool HasContent(const AddressItem& item);

/// A file's bytes as UTF-8, by its byte order mark or, without one, as they stand.
std::string WithoutByteOrderMark(std::string bytes);

} // namespace kelmio

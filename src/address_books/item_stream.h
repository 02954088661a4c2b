// How contacts go through the pipe from the process that reads them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/address_book.h"

namespace kelmio {

/// The stream is a row of texts, each closed by a zero byte: "item" and behind it one text for each property, "+" and
/// the property or "-" when there is none; "alive" when there is nothing to tell yet; "end". What stops before "end"
/// isn't whole. Properties hold no zero byte.
std::string EncodedItem(const AddressItem& item);
/// "alive" and "end" with their zero bytes.
std::string_view EncodedSignOfLife();
std::string_view EncodedEnd();

/// Puts the items together again from pieces of any size. Any thread.
class ItemStream {
public:
  /// At most `most_items` are kept; those behind are left out.
  explicit ItemStream(std::size_t most_items);

  /// False once the bytes are no such stream; then no further piece is looked at.
  bool Take(std::string_view bytes);
  bool Ended() const { return ended_; }
  bool Full() const { return items_.size() >= most_items_; }
  std::vector<AddressItem>& Items() { return items_; }

private:
  bool TakeText(std::string text);

  std::size_t most_items_;
  std::vector<AddressItem> items_;
  AddressItem item_;
  /// The property that the next text is, or none between two items.
  std::size_t next_property_;
  std::string unfinished_;
  bool ended_ = false;
  bool broken_ = false;
};

} // namespace kelmio

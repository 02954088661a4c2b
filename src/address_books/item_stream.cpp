#include "address_books/item_stream.h"

#include <utility>

namespace kelmio {

namespace {

constexpr std::size_t kBetweenItems = kAddressItemProperties.size();

constexpr std::string_view kItem = "item";
constexpr std::string_view kAlive{"alive\0", 6};
constexpr std::string_view kEnd{"end\0", 4};
constexpr char kThere = '+';
constexpr char kNotThere = '-';

} // namespace

std::string EncodedItem(const AddressItem& item) {
  std::string stream(kItem);
  stream += '\0';
  for (const auto property : kAddressItemProperties) {
    const auto& value = item.*property;
    stream += value ? kThere : kNotThere;
    stream += value.value_or("");
    stream += '\0';
  }
  return stream;
}

std::string_view EncodedSignOfLife() {
  return kAlive;
}
std::string_view EncodedEnd() {
  return kEnd;
}

ItemStream::ItemStream(std::size_t most_items) : most_items_(most_items), next_property_(kBetweenItems) {}

bool ItemStream::Take(std::string_view bytes) {
  while (!broken_ && !bytes.empty()) {
    const std::size_t zero = bytes.find('\0');
    unfinished_ += bytes.substr(0, zero);
    if (zero == std::string_view::npos)
      break;
    bytes.remove_prefix(zero + 1);
    broken_ = !TakeText(std::exchange(unfinished_, {}));
  }
  return !broken_;
}

bool ItemStream::TakeText(std::string text) {
  if (ended_)
    return false;
  if (next_property_ == kBetweenItems) {
    if (text == kItem)
      next_property_ = 0;
    else if (text == kEnd.substr(0, kEnd.size() - 1))
      ended_ = true;
    else
      return text == kAlive.substr(0, kAlive.size() - 1);
    return true;
  }
  if (text.empty() || (text.front() != kThere && text != std::string_view(&kNotThere, 1)))
    return false;
  if (text.front() == kThere)
    item_.*kAddressItemProperties[next_property_] = text.substr(1);
  if (++next_property_ == kBetweenItems) {
    AddressItem item = std::exchange(item_, {});
    if (!Full())
      items_.push_back(std::move(item));
  }
  return true;
}

} // namespace kelmio

#include "core/cRegistry.h"

#include <algorithm>
#include <cstdlib>

namespace kelmio {
namespace {

constexpr std::size_t kNumberSize = 4;
// The platform's result for a type that can't be written: invalid data.
constexpr auto kInvalidData = static_cast<RegistryResult>(13);

std::int32_t NumberOfBytes(std::string_view bytes, bool big_endian) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < std::min(bytes.size(), kNumberSize); ++i) {
    const std::size_t shift = 8 * (big_endian ? kNumberSize - 1 - i : i);
    number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << shift;
  }
  return static_cast<std::int32_t>(number);
}

std::string BytesOfNumber(std::int32_t number) {
  std::string bytes;
  for (std::size_t i = 0; i < kNumberSize; ++i)
    bytes += static_cast<char>(static_cast<std::uint32_t>(number) >> (8 * i) & 0xFFU);
  return bytes;
}

// Names between percent signs that the environment doesn't have stay as they stand.
std::string WithEnvironment(const std::string& text) {
  std::string result;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t open = text.find('%', at);
    const std::size_t close = open == std::string::npos ? open : text.find('%', open + 1);
    if (close == std::string::npos)
      break;
    const char* value = std::getenv(text.substr(open + 1, close - open - 1).c_str());
    result += text.substr(at, open - at);
    // The closing sign of an unknown name may be the opening one of the next.
    result += value != nullptr ? std::string(value) : text.substr(open, close - open);
    at = value != nullptr ? close + 1 : close;
  }
  return result + text.substr(std::min(at, text.size()));
}

bool NamesTheEnvironment(const std::string& text) {
  const std::size_t first = text.find('%');
  return first != std::string::npos && text.find('%', first + 2) != std::string::npos;
}

} // namespace

std::string TextOf(const RegistryData& data) {
  if (const auto* text = std::get_if<std::string>(&data))
    return *text;
  if (const auto* number = std::get_if<std::int32_t>(&data))
    return std::to_string(*number);
  if (const auto* bytes = std::get_if<RegistryBytes>(&data))
    return std::string(bytes->begin(), bytes->end());
  return {};
}

cRegistry::cRegistry(RegistryStore& store, std::string program) : store_(store), program_(std::move(program)) {}

bool cRegistry::KeyExists() const {
  return store_.KeyExists(ClassKey, SectionKey);
}

RegistryOutcome cRegistry::CreateKey() {
  return Outcome(store_.CreateKey(ClassKey, SectionKey), "Failed to create registry Key: " + Place());
}

RegistryOutcome cRegistry::DeleteKey() {
  return Outcome(store_.DeleteKey(ClassKey, SectionKey), "Failed to delete registry Key: " + Place());
}

RegistryOutcome cRegistry::DeleteValue() {
  const std::string description = "Failed to open key " + Place() + " for delete access";
  if (!KeyExists())
    return Error(description);
  return Outcome(store_.DeleteValue(ClassKey, SectionKey, ValueKey), description);
}

RegistryData cRegistry::Value() {
  const std::optional<RegistryValue> stored = store_.Query(ClassKey, SectionKey, ValueKey);
  if (!stored)
    return Default;
  ValueType = stored->type;
  switch (stored->type) {
  case registry_type::kText:
  case registry_type::kTextList:
    return stored->bytes;
  case registry_type::kExpandableText:
    return WithEnvironment(stored->bytes);
  case registry_type::kNumber:
    return NumberOfBytes(stored->bytes, false);
  case registry_type::kNumberBigEndian:
    return NumberOfBytes(stored->bytes, true);
  default:
    return RegistryBytes(stored->bytes.begin(), stored->bytes.end());
  }
}

RegistryOutcome cRegistry::SetValue(const RegistryData& value) {
  const std::string text = TextOf(value);
  const std::string description =
      "Failed to set registry value Key: " + Place() + ",Key: '" + ValueKey + "' to value: '" + text + "'";
  const RegistryResult opened = store_.CreateKey(ClassKey, SectionKey);
  if (opened != RegistryResult::Ok)
    return Error(description);

  RegistryValue stored{ValueType, text};
  switch (ValueType) {
  case registry_type::kText:
  case registry_type::kExpandableText:
    stored.type = NamesTheEnvironment(text) ? registry_type::kExpandableText : registry_type::kText;
    break;
  case registry_type::kBinary:
    if (!std::holds_alternative<RegistryBytes>(value))
      return Error(description);
    break;
  case registry_type::kNumber:
  case registry_type::kNumberBigEndian: {
    const auto* number = std::get_if<std::int32_t>(&value);
    if (number == nullptr)
      return std::nullopt;
    stored = {registry_type::kNumber, BytesOfNumber(*number)};
    break;
  }
  default:
    return Outcome(kInvalidData, description);
  }
  return Outcome(store_.Set(ClassKey, SectionKey, ValueKey, stored), description);
}

void cRegistry::EnumerateValues(std::vector<std::string>& names, std::size_t& count) const {
  names = store_.ValueNames(ClassKey, SectionKey);
  count = names.size();
}

void cRegistry::EnumerateSections(std::vector<std::string>& names, std::size_t& count) const {
  names = store_.SubKeys(ClassKey, SectionKey);
  count = names.size();
}

std::string cRegistry::Place() const {
  return "'" + std::to_string(ClassKey) + "',Section: '" + SectionKey + "'";
}

RegistryError cRegistry::Error(const std::string& description) const {
  return {RegistryError::kNumber, program_ + ".cRegistry", description};
}

RegistryOutcome cRegistry::Outcome(RegistryResult result, const std::string& description) const {
  if (result == RegistryResult::Ok)
    return std::nullopt;
  return Error(description);
}

} // namespace kelmio

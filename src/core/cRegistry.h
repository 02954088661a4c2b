// One value of the registry, named by its parts, to be read or written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/registry_store.h"

namespace kelmio {

using RegistryBytes = std::vector<std::uint8_t>;

/// A value in the type in which it is stored; empty when it is missing and no default was given.
using RegistryData = std::variant<std::monostate, std::string, std::int32_t, RegistryBytes>;

/// The value as text: a number in decimal, bytes as they are.
std::string TextOf(const RegistryData& data);

struct RegistryError {
  static constexpr int kNumber = 26001;
  int number = kNumber;
  std::string source;
  std::string description;
};

/// Nothing on success.
using RegistryOutcome = std::optional<RegistryError>;

/// The fields are set before each operation. A failed read gives `Default`; all other failures are returned.
/// User interface thread only; the store must live as long.
class cRegistry {
public:
  /// `program` is the executable's name, which stands in the source of an error.
  explicit cRegistry(RegistryStore& store, std::string program = "Kelmio");

  std::uint32_t ClassKey = kHkeyLocalMachine;
  std::string SectionKey;
  std::string ValueKey;
  RegistryData Default;
  std::uint32_t ValueType = registry_type::kText;

  bool KeyExists() const;
  RegistryOutcome CreateKey();
  RegistryOutcome DeleteKey();
  RegistryOutcome DeleteValue();

  /// Sets `ValueType` to the stored type when there is a value. Environment names between percent signs are
  /// replaced in a text of that type.
  RegistryData Value();
  /// Stores as `ValueType` says and creates the key if it is missing. A number type given no number writes
  /// nothing.
  RegistryOutcome SetValue(const RegistryData& value);

  void EnumerateValues(std::vector<std::string>& names, std::size_t& count) const;
  void EnumerateSections(std::vector<std::string>& names, std::size_t& count) const;

private:
  std::string Place() const;
  RegistryError Error(const std::string& description) const;
  RegistryOutcome Outcome(RegistryResult result, const std::string& description) const;

  RegistryStore& store_;
  std::string program_;
};

} // namespace kelmio

// The store behind cRegistry: a tree of keys with typed values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelmio {

/// Value types of the registry, by their platform numbers.
namespace registry_type {
inline constexpr std::uint32_t kText = 1;
inline constexpr std::uint32_t kExpandableText = 2;
inline constexpr std::uint32_t kBinary = 3;
inline constexpr std::uint32_t kNumber = 4;
inline constexpr std::uint32_t kNumberBigEndian = 5;
inline constexpr std::uint32_t kTextList = 7;
} // namespace registry_type

/// Root keys, by their platform numbers.
inline constexpr std::uint32_t kHkeyClassesRoot = 0x80000000U;
inline constexpr std::uint32_t kHkeyCurrentUser = 0x80000001U;
inline constexpr std::uint32_t kHkeyLocalMachine = 0x80000002U;

/// Results of the registry calls, by their platform numbers.
enum class RegistryResult : std::uint32_t { Ok = 0, NotFound = 2, AccessDenied = 5, WriteFault = 29 };

/// One stored value as it lies in the hive: texts without a closing zero, numbers as four bytes in the
/// order of their type, lists as texts each followed by one zero.
struct RegistryValue {
  std::uint32_t type = registry_type::kText;
  std::string bytes;
  bool operator==(const RegistryValue&) const = default;
};

/// Keys and value names compare without regard to ASCII case. User interface thread only.
/// A failed call changes nothing; nothing throws.
class RegistryStore {
public:
  virtual ~RegistryStore() = default;
  virtual bool KeyExists(std::uint32_t root, std::string_view path) const = 0;
  virtual RegistryResult CreateKey(std::uint32_t root, std::string_view path) = 0;
  virtual RegistryResult DeleteKey(std::uint32_t root, std::string_view path) = 0;
  virtual std::optional<RegistryValue> Query(std::uint32_t root, std::string_view path,
                                             std::string_view name) const = 0;
  /// Creates the key when it is missing.
  virtual RegistryResult Set(std::uint32_t root, std::string_view path, std::string_view name,
                             const RegistryValue& value) = 0;
  virtual RegistryResult DeleteValue(std::uint32_t root, std::string_view path, std::string_view name) = 0;
  virtual std::vector<std::string> ValueNames(std::uint32_t root, std::string_view path) const = 0;
  virtual std::vector<std::string> SubKeys(std::uint32_t root, std::string_view path) const = 0;
};

} // namespace kelmio

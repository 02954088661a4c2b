// A hive as text: the registry-export format, read and changed with unknown lines left as they stand.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry_store.h"

namespace kelmio {

/// Keys are full paths that begin with the root's name, without a closing backslash. Keys and value names compare
/// without regard to ASCII case. Where a key or a value stands twice, the later one counts, as on importing.
/// A line that can't be read says nothing and is kept.
class RegistryText {
public:
  /// UTF-8, or UTF-16 LE with its byte order mark. No bytes make an empty hive.
  explicit RegistryText(std::string_view bytes);

  /// UTF-8, headed by the format's first line.
  std::string Bytes() const;

  /// Whether the key stands, or one below it.
  bool KeyExists(std::string_view key) const;
  std::optional<RegistryValue> Query(std::string_view key, std::string_view name) const;
  std::vector<std::string> ValueNames(std::string_view key) const;
  std::vector<std::string> SubKeys(std::string_view key) const;

  void CreateKey(std::string_view key);
  /// Removes the key with its values and whatever lines stand under it, but no key below it.
  void DeleteKey(std::string_view key);
  void Set(std::string_view key, std::string_view name, const RegistryValue& value);
  /// False when there is no such value.
  bool DeleteValue(std::string_view key, std::string_view name);

private:
  enum class Kind { Other, Key, Value };

  // One line with its continuations, and what it says.
  struct Line {
    std::string raw;
    Kind kind = Kind::Other;
    std::string key; // the key that the line names or belongs to
    std::string name;
    RegistryValue value;
  };

  static Line ReadLine(std::string raw, const std::string& current_key);
  static Line ValueLine(std::string_view key, std::string_view name, const RegistryValue& value);
  const Line* FindValue(std::string_view key, std::string_view name) const;

  std::vector<Line> lines_;
};

} // namespace kelmio

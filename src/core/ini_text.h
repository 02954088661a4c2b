// A profile text in memory: reading one value of it, and changing it with everything else left as it stands.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/ini_lines.h"

namespace kelmio {

/// The bytes of a profile file between reading and writing it. Line ends, comments, foreign lines, a byte
/// order mark and UTF-16 LE are kept. Names compare without regard to ASCII case; the first section and the
/// first key of a name stand for all of that name.
class IniText {
public:
  explicit IniText(std::string bytes);

  /// The file's bytes, in the encoding it came in.
  std::string Bytes() const;
  /// Whether a change was made that the file doesn't have yet.
  bool Changed() const { return changed_; }

  /// The value, uncut; nothing when there is no such key.
  std::optional<std::string> Read(std::string_view section, std::string_view key) const;

  /// Writes or replaces a key. Line ends and zeros in `value` become blanks, so that no value can make a
  /// line of its own. A name that could not be read back writes nothing.
  void Write(std::string_view section, std::string_view key, std::string_view value);

  /// What `Write` makes of these keys, in their order, for a section that the caller knows not to be there yet. However
  /// long the text is, it isn't searched.
  void AppendSection(std::string_view section, const std::vector<std::pair<std::string, std::string>>& keys);

  /// Removes a key's line, or a section from its header to its last key; comments behind that stay.
  void DeleteKey(std::string_view section, std::string_view key) { DeleteKeys(section, {std::string(key)}); }
  void DeleteSection(std::string_view section) { DeleteSections({std::string(section)}); }
  /// As many deletions in one walk over the text. A name that is given twice takes two keys or sections of that name.
  void DeleteKeys(std::string_view section, const std::vector<std::string>& keys);
  void DeleteSections(const std::vector<std::string>& sections);

private:
  enum class Encoding { Bytes, Utf8WithMark, Utf16Le };

  // The first section of a name: its header, and where a further key of it belongs.
  struct SectionPlace {
    std::size_t begin = 0;
    std::size_t keys_begin = 0;
    std::size_t keys_end = 0;
  };

  std::optional<SectionPlace> FindSection(std::string_view name) const;
  std::optional<IniLine> FindKey(const SectionPlace& section, std::string_view name) const;
  std::string LineEnd() const;
  void InsertLine(std::size_t at, std::string line);
  void Replace(std::size_t begin, std::size_t end, std::string_view with);

  Encoding encoding_ = Encoding::Bytes;
  std::string text_;
  bool changed_ = false;
};

/// The text of a profile file without its byte order mark; UTF-16 LE becomes UTF-8.
std::string DecodeIniBytes(std::string bytes);

} // namespace kelmio

// The lines of a profile text: where each begins and ends, and what it is.
#pragma once

#include <cstddef>
#include <string_view>

namespace kelmio {

enum class IniLineKind {
  Section, // a header
  Key,     // a name, "=", a value
  Other,   // blank, comment or foreign: kept, never read
};

/// One line of a text. `name` and `value` have no blanks around them and point into the text.
struct IniLine {
  IniLineKind kind = IniLineKind::Other;
  std::string_view name;
  std::string_view value;
  std::size_t begin = 0;
  std::size_t value_begin = 0; // right behind the "=" of a key
  std::size_t end = 0;         // where the line's own end stands, if it has one
  std::size_t next = 0;        // behind that
};

/// The line that begins at `at`, which is below `text.size()`. Lines end with CR LF, LF or CR; what stands
/// behind a zero byte is no part of what the line says.
IniLine ReadIniLine(std::string_view text, std::size_t at);

/// `text` without the blanks of the format: space, tab, vertical tab, form feed.
std::string_view TrimIniBlanks(std::string_view text);

} // namespace kelmio

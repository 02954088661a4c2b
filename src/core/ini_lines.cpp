#include "core/ini_lines.h"

#include <algorithm>

#include "core/text.h"

namespace kelmio {
namespace {

constexpr std::string_view kBlanks = " \t\v\f";

} // namespace

std::string_view TrimIniBlanks(std::string_view text) {
  return Trimmed(text, kBlanks);
}

IniLine ReadIniLine(std::string_view text, std::size_t at) {
  IniLine line;
  line.begin = at;
  line.end = at;
  while (line.end < text.size() && text[line.end] != '\n' && text[line.end] != '\r')
    ++line.end;
  const bool two_bytes = text.substr(line.end, 2) == "\r\n";
  line.next = std::min(line.end + (two_bytes ? 2U : 1U), text.size());

  std::string_view said = text.substr(at, line.end - at);
  said = said.substr(0, said.find('\0'));
  const std::string_view content = TrimIniBlanks(said);
  if (content.empty() || content.front() == ';')
    return line;
  if (content.front() == '[') {
    line.kind = IniLineKind::Section;
    line.name = TrimIniBlanks(content.substr(1, content.substr(1).find(']')));
    return line;
  }
  const std::size_t equals = said.find('=');
  if (equals == std::string_view::npos)
    return line;
  line.kind = IniLineKind::Key;
  line.name = TrimIniBlanks(said.substr(0, equals));
  line.value = TrimIniBlanks(said.substr(equals + 1));
  line.value_begin = at + equals + 1;
  return line;
}

} // namespace kelmio

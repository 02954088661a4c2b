#include "core/ini_text.h"

#include <algorithm>
#include <unordered_map>

#include "core/text.h"

namespace kelmio {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LeMark = "\xFF\xFE";
constexpr std::string_view kNewFileLineEnd = "\r\n";

bool SameName(std::string_view stored, std::string_view asked) {
  return EqualsIgnoringAsciiCase(stored, TrimIniBlanks(asked));
}

bool HasLineBreak(std::string_view text) {
  constexpr std::string_view kLineBreaks("\r\n\0", 3);
  return text.find_first_of(kLineBreaks) != std::string_view::npos;
}

bool CanNameSection(std::string_view name) {
  return !HasLineBreak(name) && name.find(']') == std::string_view::npos;
}

// A name that begins like a header or a comment would be read as one.
bool CanNameKey(std::string_view name) {
  return !HasLineBreak(name) && name.find('=') == std::string_view::npos && !name.starts_with('[') &&
         !name.starts_with(';');
}

/// How often each name is given; names are equal as in the file.
std::unordered_map<std::string, std::size_t> CountNames(const std::vector<std::string>& names) {
  std::unordered_map<std::string, std::size_t> counts;
  for (const std::string& name : names)
    ++counts[AsciiLower(TrimIniBlanks(name))];
  return counts;
}

std::string OnOneLine(std::string_view value) {
  std::string result(value);
  std::replace_if(
      result.begin(), result.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
  return result;
}

} // namespace

std::string DecodeIniBytes(std::string bytes) {
  if (bytes.starts_with(kUtf16LeMark))
    return Utf16LeToUtf8(std::string_view(bytes).substr(kUtf16LeMark.size()));
  if (bytes.starts_with(kUtf8Mark))
    bytes.erase(0, kUtf8Mark.size());
  return bytes;
}

IniText::IniText(std::string bytes) {
  if (bytes.starts_with(kUtf16LeMark))
    encoding_ = Encoding::Utf16Le;
  else if (bytes.starts_with(kUtf8Mark))
    encoding_ = Encoding::Utf8WithMark;
  text_ = DecodeIniBytes(std::move(bytes));
}

std::string IniText::Bytes() const {
  switch (encoding_) {
  case Encoding::Utf16Le:
    return std::string(kUtf16LeMark) + Utf8ToUtf16Le(text_);
  case Encoding::Utf8WithMark:
    return std::string(kUtf8Mark) + text_;
  case Encoding::Bytes:
    break;
  }
  return text_;
}

std::optional<std::string> IniText::Read(std::string_view section, std::string_view key) const {
  const std::optional<SectionPlace> place = FindSection(section);
  if (!place)
    return std::nullopt;
  const std::optional<IniLine> line = FindKey(*place, key);
  if (!line)
    return std::nullopt;
  return std::string(line->value);
}

void IniText::Write(std::string_view section, std::string_view key, std::string_view value) {
  const std::string_view section_name = TrimIniBlanks(section);
  const std::string_view key_name = TrimIniBlanks(key);
  if (!CanNameSection(section_name) || !CanNameKey(key_name))
    return;
  const std::string written = OnOneLine(value);
  const std::string key_line = std::string(key_name) + "=" + written;

  const std::optional<SectionPlace> place = FindSection(section_name);
  if (!place) {
    InsertLine(text_.size(), "[" + std::string(section_name) + "]");
    InsertLine(text_.size(), key_line);
    return;
  }
  const std::optional<IniLine> line = FindKey(*place, key_name);
  if (!line)
    InsertLine(place->keys_end, key_line);
  else if (line->value != TrimIniBlanks(written))
    Replace(line->value_begin, line->end, written);
}

void IniText::AppendSection(std::string_view section, const std::vector<std::pair<std::string, std::string>>& keys) {
  const std::string_view name = TrimIniBlanks(section);
  if (!CanNameSection(name))
    return;
  bool has_header = false;
  for (const auto& [key, value] : keys) {
    const std::string_view key_name = TrimIniBlanks(key);
    if (!CanNameKey(key_name))
      continue;
    if (!has_header)
      InsertLine(text_.size(), "[" + std::string(name) + "]");
    has_header = true;
    InsertLine(text_.size(), std::string(key_name) + "=" + OnOneLine(value));
  }
}

void IniText::DeleteKeys(std::string_view section, const std::vector<std::string>& keys) {
  const std::optional<SectionPlace> place = FindSection(section);
  if (!place)
    return;
  std::unordered_map<std::string, std::size_t> wanted = CountNames(keys);
  std::string kept;
  std::size_t kept_to = place->keys_begin;
  for (std::size_t at = place->keys_begin; at < place->keys_end;) {
    const IniLine line = ReadIniLine(text_, at);
    at = line.next;
    if (line.kind != IniLineKind::Key)
      continue;
    const auto found = wanted.find(AsciiLower(line.name));
    if (found == wanted.end() || found->second == 0)
      continue;
    --found->second;
    kept.append(text_, kept_to, line.begin - kept_to);
    kept_to = line.next;
  }
  if (kept_to > place->keys_begin)
    Replace(place->keys_begin, kept_to, kept);
}

void IniText::DeleteSections(const std::vector<std::string>& sections) {
  std::unordered_map<std::string, std::size_t> wanted = CountNames(sections);
  std::string kept;
  std::size_t kept_to = 0;
  bool deleting = false;
  for (std::size_t at = 0; at < text_.size();) {
    const IniLine line = ReadIniLine(text_, at);
    at = line.next;
    if (line.kind == IniLineKind::Section) {
      const auto found = wanted.find(AsciiLower(line.name));
      deleting = found != wanted.end() && found->second > 0;
      if (deleting) {
        --found->second;
        kept.append(text_, kept_to, line.begin - kept_to);
        kept_to = line.next;
      }
    } else if (deleting && line.kind == IniLineKind::Key) {
      kept_to = line.next;
    }
  }
  if (kept_to > 0)
    Replace(0, kept_to, kept);
}

std::optional<IniText::SectionPlace> IniText::FindSection(std::string_view name) const {
  std::optional<SectionPlace> place;
  for (std::size_t at = 0; at < text_.size();) {
    const IniLine line = ReadIniLine(text_, at);
    at = line.next;
    if (line.kind == IniLineKind::Section) {
      if (place)
        break;
      if (SameName(line.name, name))
        place = SectionPlace{line.begin, line.next, line.next};
    } else if (place && line.kind == IniLineKind::Key) {
      place->keys_end = line.next;
    }
  }
  return place;
}

std::optional<IniLine> IniText::FindKey(const SectionPlace& section, std::string_view name) const {
  for (std::size_t at = section.keys_begin; at < section.keys_end;) {
    const IniLine line = ReadIniLine(text_, at);
    at = line.next;
    if (line.kind == IniLineKind::Key && SameName(line.name, name))
      return line;
  }
  return std::nullopt;
}

std::string IniText::LineEnd() const {
  if (!text_.empty()) {
    const IniLine first = ReadIniLine(text_, 0);
    if (first.next > first.end)
      return text_.substr(first.end, first.next - first.end);
  }
  return std::string(kNewFileLineEnd);
}

void IniText::InsertLine(std::size_t at, std::string line) {
  const std::string line_end = LineEnd();
  line += line_end;
  if (at > 0 && text_[at - 1] != '\n' && text_[at - 1] != '\r')
    line.insert(0, line_end);
  Replace(at, at, line);
}

void IniText::Replace(std::size_t begin, std::size_t end, std::string_view with) {
  text_.replace(begin, end - begin, with);
  changed_ = true;
}

} // namespace kelmio

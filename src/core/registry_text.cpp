#include "core/registry_text.h"

#include <algorithm>
#include <charconv>

#include "core/text.h"

namespace kelmio {
namespace {

constexpr std::string_view kFirstLine = "Windows Registry Editor Version 5.00";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LeMark = "\xFF\xFE";
constexpr std::string_view kZero16("\0\0", 2);
constexpr std::size_t kHexColumns = 76;

bool IsTextType(std::uint32_t type) {
  return type == registry_type::kText || type == registry_type::kExpandableText || type == registry_type::kTextList;
}

bool Same(std::string_view left, std::string_view right) {
  return EqualsIgnoringAsciiCase(left, right);
}

bool IsBelow(std::string_view key, std::string_view above) {
  return key.size() > above.size() + 1 && key[above.size()] == '\\' && Same(key.substr(0, above.size()), above);
}

// Takes a text in quotes off the front; a backslash says that the next character stands for itself.
std::optional<std::string> TakeQuoted(std::string_view& rest) {
  if (!rest.starts_with('"'))
    return std::nullopt;
  std::string text;
  for (std::size_t at = 1; at < rest.size(); ++at) {
    if (rest[at] == '"') {
      rest.remove_prefix(at + 1);
      return text;
    }
    if (rest[at] == '\\' && ++at == rest.size())
      break;
    text += rest[at];
  }
  return std::nullopt;
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\')
      quoted += '\\';
    quoted += c;
  }
  return quoted + "\"";
}

std::optional<std::uint32_t> HexNumber(std::string_view digits) {
  std::uint32_t number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  if (digits.empty() || result.ec != std::errc() || result.ptr != digits.data() + digits.size())
    return std::nullopt;
  return number;
}

// "01,0a," with blanks, and with a backslash before each line end.
std::optional<std::string> HexBytes(std::string_view list) {
  std::string bytes;
  while (true) {
    const std::size_t comma = list.find(',');
    const std::string_view item = Trimmed(list.substr(0, comma), " \t\r\n\\");
    if (!item.empty()) {
      const std::optional<std::uint32_t> byte = HexNumber(item);
      if (!byte || *byte > 0xFF)
        return std::nullopt;
      bytes += static_cast<char>(*byte);
    } else if (comma != std::string_view::npos) {
      return std::nullopt;
    }
    if (comma == std::string_view::npos)
      return bytes;
    list.remove_prefix(comma + 1);
  }
}

std::string HexList(std::string_view prefix, std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string list(prefix);
  std::size_t column = list.size();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    list += kDigits[byte >> 4];
    list += kDigits[byte & 0xFU];
    column += 3;
    if (i + 1 == bytes.size())
      break;
    list += ',';
    if (column > kHexColumns) {
      list += "\\\n  ";
      column = 2;
    }
  }
  return list;
}

// A text lies in UTF-16 with a closing zero, a list with one zero after each text and one more.
RegistryValue ValueOfHex(std::uint32_t type, std::string bytes) {
  if (!IsTextType(type))
    return {type, std::move(bytes)};
  std::string_view text = bytes;
  if (text.ends_with(kZero16))
    text.remove_suffix(kZero16.size());
  return {type, Utf16LeToUtf8(text)};
}

std::string HexOfValue(const RegistryValue& value) {
  return IsTextType(value.type) ? Utf8ToUtf16Le(value.bytes) + std::string(kZero16) : value.bytes;
}

std::optional<RegistryValue> ReadData(std::string_view data) {
  constexpr std::string_view kNumberPrefix = "dword:";
  constexpr std::string_view kHexPrefix = "hex";
  if (data.starts_with('"')) {
    const std::optional<std::string> text = TakeQuoted(data);
    if (!text || !Trimmed(data).empty())
      return std::nullopt;
    return RegistryValue{registry_type::kText, *text};
  }
  if (data.starts_with(kNumberPrefix)) {
    const std::optional<std::uint32_t> number = HexNumber(Trimmed(data.substr(kNumberPrefix.size())));
    if (!number)
      return std::nullopt;
    RegistryValue value{registry_type::kNumber, {}};
    for (unsigned shift = 0; shift < 32; shift += 8)
      value.bytes += static_cast<char>(*number >> shift & 0xFFU);
    return value;
  }
  const std::size_t colon = data.find(':');
  if (!data.starts_with(kHexPrefix) || colon == std::string_view::npos)
    return std::nullopt;
  std::string_view form = data.substr(kHexPrefix.size(), colon - kHexPrefix.size());
  std::optional<std::uint32_t> type = registry_type::kBinary;
  if (!form.empty()) {
    if (form.size() < 3 || form.front() != '(' || form.back() != ')')
      return std::nullopt;
    type = HexNumber(form.substr(1, form.size() - 2));
  }
  std::optional<std::string> bytes = HexBytes(data.substr(colon + 1));
  if (!type || !bytes)
    return std::nullopt;
  return ValueOfHex(*type, std::move(*bytes));
}

std::string WriteData(const RegistryValue& value) {
  constexpr std::string_view kBreaks("\r\n\0", 3);
  if (value.type == registry_type::kText && value.bytes.find_first_of(kBreaks) == std::string::npos)
    return Quoted(value.bytes);
  if (value.type == registry_type::kNumber && value.bytes.size() == 4) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text = "dword:";
    for (std::size_t i = 4; i-- > 0;) {
      const auto byte = static_cast<unsigned char>(value.bytes[i]);
      text += kDigits[byte >> 4];
      text += kDigits[byte & 0xFU];
    }
    return text;
  }
  std::string form = "hex";
  if (value.type != registry_type::kBinary) {
    char digits[8];
    const auto end = std::to_chars(digits, digits + sizeof digits, value.type, 16);
    form += "(" + std::string(digits, end.ptr) + ")";
  }
  return HexList(form + ":", HexOfValue(value));
}

bool EndsInContinuation(std::string_view line) {
  const std::string_view content = Trimmed(line, " \t\r");
  const bool list = content.find("=hex") != std::string_view::npos || !content.starts_with('"');
  return list && content.ends_with(",\\");
}

} // namespace

RegistryText::RegistryText(std::string_view bytes) {
  std::string text;
  if (bytes.starts_with(kUtf16LeMark))
    text = Utf16LeToUtf8(bytes.substr(kUtf16LeMark.size()));
  else
    text = bytes.substr(bytes.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0);

  std::string current_key;
  std::string raw;
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (line.ends_with('\r'))
      line.remove_suffix(1);
    raw += line;
    // A line that promises to go on before one that begins anew was cut off: it alone is lost.
    const std::string_view following = Trimmed(rest.substr(0, rest.find('\n')));
    if (EndsInContinuation(line) && !following.empty() && !following.starts_with('"') && !following.starts_with('[') &&
        !following.starts_with('@')) {
      raw += '\n';
      continue;
    }
    lines_.push_back(ReadLine(std::move(raw), current_key));
    raw.clear();
    if (lines_.back().kind == Kind::Key)
      current_key = lines_.back().key;
  }
  if (lines_.empty() || lines_.front().raw != kFirstLine)
    lines_.insert(lines_.begin(), ReadLine(std::string(kFirstLine), {}));
}

RegistryText::Line RegistryText::ReadLine(std::string raw, const std::string& current_key) {
  Line line;
  line.key = current_key;
  std::string_view content = Trimmed(raw, " \t\r\n");
  if (content.starts_with('[') && content.ends_with(']') && !content.starts_with("[-")) {
    line.kind = Kind::Key;
    line.key = content.substr(1, content.size() - 2);
  } else if (!current_key.empty() && (content.starts_with('"') || content.starts_with("@="))) {
    std::optional<std::string> name = std::string(); // "@" is the value without a name
    if (content.starts_with('@'))
      content.remove_prefix(1);
    else
      name = TakeQuoted(content);
    std::optional<RegistryValue> value;
    if (name && content.starts_with('='))
      value = ReadData(content.substr(1));
    if (value) {
      line.kind = Kind::Value;
      line.name = *name;
      line.value = std::move(*value);
    }
  }
  line.raw = std::move(raw);
  return line;
}

RegistryText::Line RegistryText::ValueLine(std::string_view key, std::string_view name, const RegistryValue& value) {
  Line line;
  line.kind = Kind::Value;
  line.key = key;
  line.name = name;
  line.value = value;
  line.raw = (name.empty() ? "@" : Quoted(name)) + "=" + WriteData(value);
  return line;
}

std::string RegistryText::Bytes() const {
  std::string bytes;
  for (const Line& line : lines_)
    bytes += line.raw + "\n";
  return bytes;
}

bool RegistryText::KeyExists(std::string_view key) const {
  return std::any_of(lines_.begin(), lines_.end(), [&](const Line& line) {
    return line.kind == Kind::Key && (Same(line.key, key) || IsBelow(line.key, key));
  });
}

std::optional<RegistryValue> RegistryText::Query(std::string_view key, std::string_view name) const {
  const Line* line = FindValue(key, name);
  if (line == nullptr)
    return std::nullopt;
  return line->value;
}

std::vector<std::string> RegistryText::ValueNames(std::string_view key) const {
  std::vector<std::string> names;
  for (const Line& line : lines_)
    if (line.kind == Kind::Value && Same(line.key, key) &&
        std::none_of(names.begin(), names.end(), [&](const std::string& name) { return Same(name, line.name); }))
      names.push_back(line.name);
  return names;
}

std::vector<std::string> RegistryText::SubKeys(std::string_view key) const {
  std::vector<std::string> names;
  for (const Line& line : lines_) {
    if (line.kind != Kind::Key || !IsBelow(line.key, key))
      continue;
    const std::string below = line.key.substr(key.size() + 1);
    const std::string name = below.substr(0, below.find('\\'));
    if (std::none_of(names.begin(), names.end(), [&](const std::string& known) { return Same(known, name); }))
      names.push_back(name);
  }
  return names;
}

void RegistryText::CreateKey(std::string_view key) {
  if (KeyExists(key))
    return;
  lines_.push_back(ReadLine("", {}));
  lines_.push_back(ReadLine("[" + std::string(key) + "]", {}));
}

void RegistryText::DeleteKey(std::string_view key) {
  std::erase_if(lines_, [&](const Line& line) { return Same(line.key, key); });
}

void RegistryText::Set(std::string_view key, std::string_view name, const RegistryValue& value) {
  Line written = ValueLine(key, name, value);
  if (const Line* stands = FindValue(key, name)) {
    lines_[static_cast<std::size_t>(stands - lines_.data())] = std::move(written);
    return;
  }
  const auto belongs = [&](const Line& line) { return line.kind != Kind::Other && Same(line.key, key); };
  auto last = std::find_if(lines_.rbegin(), lines_.rend(), belongs);
  if (last == lines_.rend()) {
    lines_.push_back(ReadLine("", {}));
    lines_.push_back(ReadLine("[" + std::string(key) + "]", {}));
    last = lines_.rbegin();
  }
  lines_.insert(last.base(), std::move(written));
}

bool RegistryText::DeleteValue(std::string_view key, std::string_view name) {
  return std::erase_if(lines_, [&](const Line& line) {
           return line.kind == Kind::Value && Same(line.key, key) && Same(line.name, name);
         }) > 0;
}

const RegistryText::Line* RegistryText::FindValue(std::string_view key, std::string_view name) const {
  const auto found = std::find_if(lines_.rbegin(), lines_.rend(), [&](const Line& line) {
    return line.kind == Kind::Value && Same(line.key, key) && Same(line.name, name);
  });
  return found == lines_.rend() ? nullptr : &*found;
}

} // namespace kelmio

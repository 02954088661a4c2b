#include "drivers/voice_modem/caller_id_report.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <utility>

#include "core/text.h"
#include "drivers/shown_text.h"

namespace kelmio {
namespace {

/// Longer texts are noise or malice; no line sends more than 50 characters (ETSI EN 300 659-3).
constexpr std::size_t kLongestText = 80;

// Messages and parameters of a report in hex (Telcordia GR-30).
constexpr unsigned kSingleFormat = 0x04;
constexpr unsigned kMultipleFormat = 0x80;
constexpr std::size_t kSingleFormatDate = 8; // MMDDHHMM before the number
constexpr unsigned kParameterNumber = 0x02;
constexpr unsigned kParameterNoNumber = 0x04;
constexpr unsigned kParameterName = 0x07;
constexpr unsigned kParameterNoName = 0x08;

enum class Field { Date, Time, Number, Name, Other };

constexpr std::array kFields{
    std::pair{std::string_view("DATE"), Field::Date},
    std::pair{std::string_view("TIME"), Field::Time},
    std::pair{std::string_view("NMBR"), Field::Number},
    std::pair{std::string_view("DDN_NMBR"), Field::Number},
    std::pair{std::string_view("NBR"), Field::Number},
    std::pair{std::string_view("FM"), Field::Number},
    std::pair{std::string_view("CALLER NUMBER"), Field::Number},
    std::pair{std::string_view("NAME"), Field::Name},
    std::pair{std::string_view("CALLER NAME"), Field::Name},
    std::pair{std::string_view("MESG"), Field::Other},
};

/// What stands in place of a number or name that isn't told.
constexpr std::array<std::string_view, 10> kNotTold{"P",        "O",           "PRIVATE", "RESTRICTED", "UNAVAILABLE",
                                                    "WITHHELD", "OUT OF AREA", "UNKNOWN", "ANONYMOUS",  "BLOCKED"};

constexpr std::string_view kBlank = " ";

struct Item {
  Field field;
  std::string_view value;
};

std::optional<Item> ItemOf(std::string_view line) {
  const std::size_t sign = line.find_first_of("=:");
  if (sign == std::string_view::npos)
    return std::nullopt;
  const std::string key = AsciiUpper(Trimmed(line.substr(0, sign), kBlank));
  const auto* found =
      std::find_if(kFields.begin(), kFields.end(), [&](const auto& entry) { return entry.first == key; });
  if (found == kFields.end())
    return std::nullopt;
  std::string_view value = line.substr(sign + 1);
  if (key == "FM") // FM:5551234 TO:5556789
    value = value.substr(0, value.find(" TO:"));
  return Item{found->second, Trimmed(value, kBlank)};
}

int HexDigit(char digit) {
  if (digit >= '0' && digit <= '9')
    return digit - '0';
  if (digit >= 'A' && digit <= 'F')
    return digit - 'A' + 10;
  if (digit >= 'a' && digit <= 'f')
    return digit - 'a' + 10;
  return -1;
}

unsigned Byte(const std::string& message, std::size_t at) {
  return static_cast<unsigned char>(message[at]);
}

/// The bytes of a report in hex, from its type to its checksum. Nothing when it is none or damaged.
std::optional<std::string> MessageOf(std::string_view line) {
  constexpr std::size_t kShortest = 3; // type, length, checksum
  std::string message;
  if (line.size() % 2 != 0)
    return std::nullopt;
  for (std::size_t at = 0; at < line.size(); at += 2) {
    const int high = HexDigit(line[at]);
    const int low = HexDigit(line[at + 1]);
    if (high < 0 || low < 0)
      return std::nullopt;
    message.push_back(static_cast<char>(high * 16 + low));
  }
  if (message.size() < kShortest || (Byte(message, 0) != kSingleFormat && Byte(message, 0) != kMultipleFormat) ||
      Byte(message, 1) + kShortest != message.size())
    return std::nullopt;
  unsigned sum = 0;
  for (std::size_t at = 0; at < message.size(); ++at)
    sum += Byte(message, at);
  if (sum % 256 != 0)
    return std::nullopt;
  return message;
}

/// Nothing when it says that there is nothing to tell.
std::string ToldText(std::string_view raw) {
  std::string text = ShownText(raw, kLongestText);
  if (std::find(kNotTold.begin(), kNotTold.end(), AsciiUpper(text)) != kNotTold.end())
    return {};
  return text;
}

/// Of several values the first that tells something counts.
void TakeFirst(std::string& kept, bool& has, std::string_view value) {
  has = true;
  if (kept.empty())
    kept = ToldText(value);
}

} // namespace

bool IsCallerIdLine(std::string_view line) {
  return ItemOf(line).has_value() || MessageOf(line).has_value();
}

void CallerIdReport::Add(std::string_view line) {
  begun_ = true;
  if (const auto message = MessageOf(line)) {
    AddHex(*message);
    return;
  }
  const auto item = ItemOf(line);
  if (!item)
    return;
  if (item->field == Field::Date)
    has_date_ = true;
  else if (item->field == Field::Time)
    has_time_ = true;
  else if (item->field == Field::Number)
    TakeFirst(number_, has_number_, item->value);
  else if (item->field == Field::Name)
    TakeFirst(name_, has_name_, item->value);
}

void CallerIdReport::AddHex(const std::string& message) {
  whole_ = true;
  const std::size_t end = message.size() - 1; // the checksum
  std::size_t at = 2;
  if (Byte(message, 0) == kSingleFormat) {
    if (end > at + kSingleFormatDate)
      number_ = ToldText(std::string_view(message).substr(at + kSingleFormatDate, end - at - kSingleFormatDate));
    return;
  }
  while (at + 2 <= end) {
    const unsigned type = Byte(message, at);
    const std::size_t length = std::min<std::size_t>(Byte(message, at + 1), end - at - 2);
    const std::string_view value = std::string_view(message).substr(at + 2, length);
    if (type == kParameterNumber)
      number_ = ToldText(value);
    else if (type == kParameterName)
      name_ = ToldText(value);
    else if (type == kParameterNoNumber)
      number_.clear();
    else if (type == kParameterNoName)
      name_.clear();
    at += 2 + length;
  }
}

} // namespace kelmio

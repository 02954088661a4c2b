#include "calls/numeric_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

namespace kelmio {

namespace {

constexpr int kDigits = 15; // that a 64-bit number keeps for certain

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Walks over a text as if it had no blanks.
class Reader {
public:
  explicit Reader(std::string_view text) : text_(text) { PassBlanks(); }

  /// 0 at the end.
  char Next() const { return text_.empty() ? '\0' : text_.front(); }
  char Take() {
    const char c = text_.front();
    text_.remove_prefix(1);
    PassBlanks();
    return c;
  }
  void TakeDigits(std::string& out) {
    while (IsDigit(Next()))
      out += Take();
  }

private:
  void PassBlanks() { text_.remove_prefix(std::min(text_.find_first_not_of(" \t\n"), text_.size())); }

  std::string_view text_;
};

/// What follows the exponent's letter; empty when it isn't one.
std::string TakeExponent(Reader reader) {
  reader.Take();
  std::string exponent;
  if (reader.Next() == '+' || reader.Next() == '-')
    exponent += reader.Take();
  std::string digits;
  reader.TakeDigits(digits);
  return digits.empty() ? std::string() : exponent + digits;
}

bool BeginsExponent(char c) {
  return c == 'e' || c == 'E' || c == 'd' || c == 'D';
}

} // namespace

std::optional<std::string> NumericText(std::string_view text) {
  Reader reader(text);
  std::string number;
  if (reader.Next() == '-')
    number += reader.Take();
  else if (reader.Next() == '+')
    reader.Take();
  number += '0'; // for a number that begins with its point, or has no digit at all
  reader.TakeDigits(number);
  if (reader.Next() == '.') {
    reader.Take();
    number += '.';
    reader.TakeDigits(number);
  }
  if (BeginsExponent(reader.Next()))
    if (const std::string exponent = TakeExponent(reader); !exponent.empty())
      number += "e" + exponent;

  double value = 0;
  const auto read = std::from_chars(number.data(), number.data() + number.size(), value);
  if (read.ec == std::errc::result_out_of_range)
    return std::nullopt;
  if (read.ec != std::errc{} || value == 0)
    return "0";
  std::array<char, 40> digits{};
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, kDigits).ptr;
  std::string shown(digits.data(), end);
  if (const std::size_t at = shown.find('e'); at != std::string::npos)
    shown[at] = 'E';
  return shown;
}

} // namespace kelmio

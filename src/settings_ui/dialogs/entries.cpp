#include "settings_ui/dialogs/entries.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "core/text.h"
#include "drivers/sip/sip_settings.h"

namespace kelmio {

namespace {

constexpr std::string_view kScheme = "sip:";
constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kAddressCharacters = "0123456789abcdefABCDEF:.%";
constexpr std::string_view kBareAddressCharacters = "0123456789abcdefABCDEF:";
constexpr std::string_view kNameCharacters = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ.-_";

bool ConsistsOf(std::string_view text, std::string_view characters) {
  return !text.empty() && text.find_first_not_of(characters) == std::string_view::npos;
}

} // namespace

Entry HostEntry(std::string_view text, const std::string& what) {
  text = Trimmed(text);
  if (EqualsIgnoringAsciiCase(text.substr(0, kScheme.size()), kScheme))
    text.remove_prefix(kScheme.size());
  if (text.empty())
    return {};
  if (text.find_first_of(" \t") != std::string_view::npos)
    return {{}, what + " is a name or an address with no blanks in it."};

  std::string host(text);
  if (std::count(text.begin(), text.end(), ':') > 1 && ConsistsOf(text, kBareAddressCharacters))
    host = "[" + host + "]";
  const std::size_t bracket = host.find(']');
  const std::size_t colon = host.find(':', bracket == std::string::npos ? 0 : bracket);
  const std::string_view name = std::string_view(host).substr(0, colon);
  const bool v6 = name.size() > 2 && name.front() == '[' && name.back() == ']';
  if (!(v6 ? ConsistsOf(name.substr(1, name.size() - 2), kAddressCharacters) : ConsistsOf(name, kNameCharacters)))
    return {{}, what + " is a name such as sip.example.org, or an address such as 192.168.1.1."};
  if (colon != std::string::npos) {
    constexpr long kMostPort = std::numeric_limits<std::uint16_t>::max();
    const std::string_view port = std::string_view(host).substr(colon + 1);
    if (!ConsistsOf(port, kDigits) || !NumberIn(port, 1, kMostPort))
      return {{}, NotInRange(what + "'s port, behind the colon,", 1, kMostPort)};
  }
  return {host};
}

std::optional<long> NumberIn(std::string_view text, long least, long most) {
  text = Trimmed(text);
  long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < least || number > most)
    return std::nullopt;
  return number;
}

std::string RangeInWords(long least, long most) {
  return "A number from " + std::to_string(least) + " to " + std::to_string(most) + ".";
}

std::string NotInRange(const std::string& what, long least, long most) {
  return what + " is a number from " + std::to_string(least) + " to " + std::to_string(most) + ".";
}

std::optional<std::chrono::milliseconds> RingPeriodIn(std::string_view text) {
  const auto number = NumberIn(text, kShortestRingPeriod.count(), kLongestRingPeriod.count());
  return number ? std::optional(std::chrono::milliseconds(*number)) : std::nullopt;
}

std::string NoRingPeriod() {
  return "The ring period is a number of milliseconds from " + std::to_string(kShortestRingPeriod.count()) + " to " +
         std::to_string(kLongestRingPeriod.count()) + ".";
}

} // namespace kelmio

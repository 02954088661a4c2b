#include "drivers/sip/sdes_keys.h"

#include <sys/random.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace kelmio {

namespace {

struct Suite {
  srtp_suite suite;
  std::string_view name;
};

// RFC 4568 section 6.2, in the order of preference. All have a key of 16 bytes and a salt of 14.
constexpr std::array kSuites{Suite{SRTP_AES_CM_128_HMAC_SHA1_80, "AES_CM_128_HMAC_SHA1_80"},
                             Suite{SRTP_AES_CM_128_HMAC_SHA1_32, "AES_CM_128_HMAC_SHA1_32"}};
constexpr std::size_t kKeyBytes = 30;
constexpr std::size_t kKeyCharacters = 40; // in base64
constexpr std::string_view kInline = "inline:";

/// The next word, taken off `text`.
std::string_view NextWord(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  const std::string_view word = text.substr(0, text.find(' '));
  text.remove_prefix(word.size());
  return word;
}

} // namespace

std::optional<SdesKey> MakeSdesKey(int tag, srtp_suite suite) {
  SdesKey made{tag, {suite, std::vector<std::uint8_t>(kKeyBytes)}};
  if (::getrandom(made.key.bytes.data(), kKeyBytes, 0) != static_cast<ssize_t>(kKeyBytes))
    return std::nullopt;
  return made;
}

std::optional<SdesKey> ParseSdesKey(std::string_view value) {
  SdesKey read;
  const std::string_view tag = NextWord(value);
  const auto [end, error] = std::from_chars(tag.data(), tag.data() + tag.size(), read.tag);
  if (error != std::errc() || end != tag.data() + tag.size())
    return std::nullopt;

  const std::string_view name = NextWord(value);
  const auto* const suite =
      std::find_if(kSuites.begin(), kSuites.end(), [&](const Suite& s) { return s.name == name; });
  if (suite == kSuites.end())
    return std::nullopt;
  auto& [cipher, bytes] = read.key;
  cipher = suite->suite;

  std::string_view text = NextWord(value);
  if (!text.starts_with(kInline))
    return std::nullopt;
  text.remove_prefix(kInline.size());
  // Behind a bar stand the lifetime of the key, which no call reaches, and an index that would change every packet.
  const std::size_t bar = std::min(text.find('|'), text.size());
  const bool indexed = text.substr(bar).find(':') != std::string_view::npos;
  // Several keys, or parameters of the session such as one that leaves the encryption out.
  const bool more = text.find(';') != std::string_view::npos || !NextWord(value).empty();
  if (indexed || more || bar != kKeyCharacters)
    return std::nullopt;
  bytes.resize(kKeyCharacters);
  std::size_t length = bytes.size();
  if (base64_decode(text.data(), bar, bytes.data(), &length) != 0 || length != kKeyBytes)
    return std::nullopt;
  bytes.resize(length);
  return read;
}

std::string ToText(const SdesKey& key) {
  const auto* const suite =
      std::find_if(kSuites.begin(), kSuites.end(), [&](const Suite& s) { return s.suite == key.key.suite; });
  std::array<char, kKeyCharacters + 1> text{};
  std::size_t length = text.size();
  if (suite == kSuites.end() || base64_encode(key.key.bytes.data(), key.key.bytes.size(), text.data(), &length) != 0)
    return {};
  return std::to_string(key.tag) + " " + std::string(suite->name) + " " + std::string(kInline) +
         std::string(text.data(), length);
}

} // namespace kelmio

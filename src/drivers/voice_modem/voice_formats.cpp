#include "drivers/voice_modem/voice_formats.h"

#include <algorithm>
#include <array>
#include <charconv>
// The headers of spandsp name fixed-width types without bringing them in.
#include <cstdint>

#include <spandsp/telephony.h>

#include <spandsp/bit_operations.h>
#include <spandsp/g711.h>

namespace kelmio {
namespace {

constexpr int kMiddle8 = 128; // silence in unsigned samples of 8 bits
constexpr int kMiddle16 = 32768;

/// Fields at commas, but not at those within quotes or brackets.
std::vector<std::string_view> Fields(std::string_view line) {
  std::vector<std::string_view> fields;
  std::size_t begin = 0;
  bool quoted = false;
  int depth = 0;
  for (std::size_t at = 0; at <= line.size(); ++at) {
    const char letter = at < line.size() ? line[at] : ',';
    if (letter == '"')
      quoted = !quoted;
    else if (letter == '(' && !quoted)
      ++depth;
    else if (letter == ')' && !quoted && depth > 0)
      --depth;
    if (at == line.size() || (letter == ',' && !quoted && depth == 0)) {
      fields.push_back(line.substr(begin, at - begin));
      begin = at + 1;
    }
  }
  return fields;
}

std::optional<int> FirstNumber(std::string_view text) {
  const std::size_t digit = text.find_first_of("0123456789");
  if (digit == std::string_view::npos)
    return std::nullopt;
  int number = 0;
  const auto read = std::from_chars(text.data() + digit, text.data() + text.size(), number);
  if (read.ec != std::errc())
    return std::nullopt;
  return number;
}

/// Whether `ranges`, such as `8000`, `(7200,8000)` or `(7200-11025)`, holds the rate.
bool OffersRate(std::string_view ranges, int rate) {
  std::optional<int> low; // the number before a dash
  for (std::size_t at = ranges.find_first_of("0123456789"); at != std::string_view::npos;
       at = ranges.find_first_of("0123456789", at)) {
    const std::size_t end = std::min(ranges.find_first_not_of("0123456789", at), ranges.size());
    const auto number = FirstNumber(ranges.substr(at, end - at));
    if (number == rate || (number && low && *low <= rate && rate <= *number))
      return true;
    low = end < ranges.size() && ranges[end] == '-' ? number : std::nullopt;
    at = end;
  }
  return false;
}

/// The name as one word in capitals: `Unsigned PCM`, `8-BIT LINEAR` and `G.711 U-LAW` are written in many ways.
std::string Squeezed(std::string_view name) {
  std::string word;
  for (const char letter : name) {
    if (letter >= 'a' && letter <= 'z')
      word.push_back(static_cast<char>(letter - 'a' + 'A'));
    else if ((letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9'))
      word.push_back(letter);
    else if (letter == '\xB5' || letter == '\xE6') // the letter mu in Latin-1 and in old code pages
      word.push_back('U');
  }
  return word;
}

bool Has(const std::string& word, std::string_view part) {
  return word.find(part) != std::string::npos;
}

std::optional<VoiceFormat> FormatOf(const VoiceFormatRow& row) {
  const std::string name = Squeezed(row.name);
  if (Has(name, "ADPCM") || (Has(name, "G7") && !Has(name, "G711")))
    return std::nullopt;
  if (Has(name, "ULAW") || Has(name, "MULAW") || Has(name, "G711U"))
    return VoiceFormat{row.first_id, VoiceCoding::MuLaw, false};
  if (Has(name, "ALAW") || Has(name, "G711A"))
    return VoiceFormat{row.first_id, VoiceCoding::ALaw, false};
  if (!Has(name, "PCM") && !Has(name, "LIN"))
    return std::nullopt;
  const bool says_unsigned = Has(name, "UNSIGNED");
  const bool says_signed = !says_unsigned && Has(name, "SIGNED");
  // Where the name doesn't say it, 8 bits are unsigned and 16 are signed, as in a wave file.
  if (row.bits == 8)
    return VoiceFormat{row.first_id, VoiceCoding::Linear8, says_signed};
  if (row.bits == 16)
    return VoiceFormat{row.first_id, VoiceCoding::Linear16, !says_unsigned};
  return std::nullopt;
}

int Rank(const VoiceFormat& format) {
  switch (format.coding) {
  case VoiceCoding::Linear8:
    return format.is_signed ? 4 : 0;
  case VoiceCoding::MuLaw:
    return 1;
  case VoiceCoding::ALaw:
    return 2;
  case VoiceCoding::Linear16:
    return 3;
  }
  return 5;
}

} // namespace

std::optional<VoiceFormatRow> ReadVoiceFormatRow(std::string_view line) {
  constexpr std::size_t kNameField = 1;
  constexpr std::size_t kBitsField = 2;
  constexpr std::size_t kRatesField = 4;
  // The prefix, as in `+VSM: 1,"..."` or `#VSM: `, stands before the first quote.
  if (const std::size_t colon = line.find(':'); colon < line.find('"'))
    line.remove_prefix(colon + 1);
  const std::vector<std::string_view> fields = Fields(line);
  if (fields.size() <= kRatesField || fields[kNameField].find('"') == std::string_view::npos)
    return std::nullopt;
  const auto id = FirstNumber(fields[0]);
  if (!id)
    return std::nullopt;
  VoiceFormatRow row;
  row.first_id = *id;
  const std::string_view quoted = fields[kNameField];
  const std::size_t open = quoted.find('"');
  row.name = quoted.substr(open + 1, quoted.rfind('"') - open - (quoted.rfind('"') > open ? 1 : 0));
  row.bits = FirstNumber(fields[kBitsField]).value_or(0);
  row.rates = fields[kRatesField];
  return row;
}

std::optional<VoiceFormat> ChooseVoiceFormat(const std::vector<VoiceFormatRow>& rows) {
  std::optional<VoiceFormat> best;
  for (const VoiceFormatRow& row : rows) {
    const auto format = OffersRate(row.rates, kModemRate) ? FormatOf(row) : std::nullopt;
    if (format && (!best || Rank(*format) < Rank(*best)))
      best = format;
  }
  return best;
}

int BytesPerSample(VoiceCoding coding) {
  return coding == VoiceCoding::Linear16 ? 2 : 1;
}

void EncodeVoice(const VoiceFormat& format, std::span<const std::int16_t> samples, std::string& bytes) {
  for (const std::int16_t sample : samples) {
    switch (format.coding) {
    case VoiceCoding::Linear8: {
      // Rounded, not cut: cutting would put half a step of direct current on the line.
      const int rounded = std::min((sample + kMiddle8) >> 8, 127);
      bytes.push_back(static_cast<char>(format.is_signed ? rounded : rounded + kMiddle8));
      break;
    }
    case VoiceCoding::MuLaw:
      bytes.push_back(static_cast<char>(linear_to_ulaw(sample)));
      break;
    case VoiceCoding::ALaw:
      bytes.push_back(static_cast<char>(linear_to_alaw(sample)));
      break;
    case VoiceCoding::Linear16: {
      const auto word = static_cast<unsigned>(format.is_signed ? sample : sample + kMiddle16);
      bytes.push_back(static_cast<char>(word & 0xFFU));
      bytes.push_back(static_cast<char>((word >> 8U) & 0xFFU));
      break;
    }
    }
  }
}

std::size_t DecodeVoice(const VoiceFormat& format, std::string_view bytes, std::vector<std::int16_t>& samples) {
  const auto width = static_cast<std::size_t>(BytesPerSample(format.coding));
  const std::size_t taken = bytes.size() - bytes.size() % width;
  for (std::size_t at = 0; at < taken; at += width) {
    const auto byte = static_cast<std::uint8_t>(bytes[at]);
    switch (format.coding) {
    case VoiceCoding::Linear8:
      samples.push_back(
          static_cast<std::int16_t>((format.is_signed ? static_cast<std::int8_t>(byte) : byte - kMiddle8) * 256));
      break;
    case VoiceCoding::MuLaw:
      samples.push_back(ulaw_to_linear(byte));
      break;
    case VoiceCoding::ALaw:
      samples.push_back(alaw_to_linear(byte));
      break;
    case VoiceCoding::Linear16: {
      const int word = byte | (static_cast<std::uint8_t>(bytes[at + 1]) << 8);
      samples.push_back(static_cast<std::int16_t>(format.is_signed ? word : word - kMiddle16));
      break;
    }
    }
  }
  return taken;
}

} // namespace kelmio

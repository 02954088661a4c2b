#include "drivers/voice_modem/g711.h"

#include <algorithm>
#include <bit>

namespace kelmio {
namespace {

constexpr unsigned kSign = 0x80;
constexpr unsigned kStep = 0x0F;     // place within a segment
constexpr unsigned kMuLawBias = 132; // 33 in 14-bit samples: makes every segment twice as long as the one below
constexpr unsigned kMuLawLargest = 32767 - kMuLawBias;
constexpr unsigned kALawInverted = 0x55; // every other bit is sent inverted

} // namespace

std::uint8_t ToMuLaw(std::int16_t sample) {
  const bool negative = sample < 0;
  const auto size = static_cast<unsigned>(negative ? -static_cast<int>(sample) : sample);
  const unsigned biased = std::min(size, kMuLawLargest) + kMuLawBias;
  const auto segment = static_cast<unsigned>(std::bit_width(biased)) - 8U;
  const unsigned code = (negative ? kSign : 0U) | (segment << 4U) | ((biased >> (segment + 3U)) & kStep);
  return static_cast<std::uint8_t>(~code);
}

std::int16_t FromMuLaw(std::uint8_t code) {
  const unsigned bits = ~static_cast<unsigned>(code) & 0xFFU;
  const unsigned segment = (bits >> 4U) & 7U;
  const auto size = static_cast<int>(((((bits & kStep) << 3U) + kMuLawBias) << segment) - kMuLawBias);
  return static_cast<std::int16_t>((bits & kSign) != 0 ? -size : size);
}

std::uint8_t ToALaw(std::int16_t sample) {
  const bool negative = sample < 0;
  const auto size = static_cast<unsigned>(negative ? -static_cast<int>(sample) - 1 : sample) >> 4U; // 11 bits
  const unsigned segment = size < 32U ? size >> 4U : static_cast<unsigned>(std::bit_width(size)) - 4U;
  const unsigned shift = segment > 1U ? segment - 1U : 0U;
  const unsigned code = (negative ? 0U : kSign) | (segment << 4U) | ((size >> shift) & kStep);
  return static_cast<std::uint8_t>(code ^ kALawInverted);
}

std::int16_t FromALaw(std::uint8_t code) {
  const unsigned bits = code ^ kALawInverted;
  const unsigned segment = (bits >> 4U) & 7U;
  unsigned size = ((bits & kStep) << 1U) + 1U; // the middle of the step
  if (segment != 0U)
    size = (size + 32U) << (segment - 1U);
  const auto value = static_cast<int>(size << 3U);
  return static_cast<std::int16_t>((bits & kSign) != 0 ? value : -value);
}

} // namespace kelmio

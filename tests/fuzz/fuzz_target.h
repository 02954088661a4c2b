// What a fuzz target is made of: the entry point that libFuzzer calls, and seeds of its own. The same target is linked
// with short_run.cpp as an ordinary test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "core/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace kelmio::fuzz {

/// Inputs that reach deep into what is fuzzed. Each target defines its own.
std::vector<std::string> Seeds();

/// Ends the process with `what` unless it holds: the way in which a fuzzer is told.
inline void Check(bool holds, const char* what) {
  if (holds)
    return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

/// A text that may be shown: UTF-8, without control characters and without those that turn the direction of writing.
inline void CheckShown(std::string_view text, std::size_t longest) {
  Check(text.size() <= longest, "a shown text has an end");
  Check(IsValidUtf8(text), "a shown text is UTF-8");
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = [&](std::size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U; };
    const bool ascii_control = byte(i) < 0x20 || byte(i) == 0x7F;
    const bool latin_control = byte(i) == 0xC2 && byte(i + 1) < 0xA0;
    const bool turns = byte(i) == 0xE2 && ((byte(i + 1) == 0x80 && byte(i + 2) >= 0xA8 && byte(i + 2) <= 0xAE) ||
                                           (byte(i + 1) == 0x81 && byte(i + 2) >= 0xA6 && byte(i + 2) <= 0xA9));
    Check(!ascii_control && !latin_control && !turns, "a shown text has no control characters");
  }
}

/// Cuts an input into parts. Where it cuts is decided by the input's own first byte, so that the same input does the
/// same again.
class Cuts {
public:
  explicit Cuts(std::string_view input)
      : rest_(input.substr(input.empty() ? 0 : 1)),
        random_(1U + (input.empty() ? 0U : static_cast<unsigned char>(input[0]))) {}

  bool Empty() const { return rest_.empty(); }
  /// What was not taken yet.
  std::string_view Rest() const { return rest_; }
  /// A part of 1 to `longest` bytes, less at the end.
  std::string_view Part(std::size_t longest) { return Take(1 + random_() % longest); }
  std::string_view Take(std::size_t length) {
    const std::string_view part = rest_.substr(0, length);
    rest_.remove_prefix(part.size());
    return part;
  }
  /// The next byte as a number; 0 at the end.
  unsigned Byte() {
    const std::string_view byte = Take(1);
    return byte.empty() ? 0U : static_cast<unsigned char>(byte[0]);
  }

private:
  std::string_view rest_;
  std::minstd_rand random_;
};

inline std::string_view ViewOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

} // namespace kelmio::fuzz

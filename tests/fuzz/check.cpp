#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "core/text.h"
#include "fuzz/fuzz_target.h"

namespace kelmio::fuzz {

void Check(bool holds, const char* what) {
  if (holds)
    return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

void CheckShown(std::string_view text, std::size_t longest) {
  Check(text.size() <= longest, "a shown text has an end");
  Check(IsValidUtf8(text), "a shown text is UTF-8");
  // Of the control characters beyond ASCII and of the marks of direction, as UTF-8.
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = [&](std::size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U; };
    const bool ascii_control = byte(i) < 0x20 || byte(i) == 0x7F;
    const bool latin_control = byte(i) == 0xC2 && byte(i + 1) < 0xA0;
    const bool turns = byte(i) == 0xE2 && ((byte(i + 1) == 0x80 && byte(i + 2) >= 0xA8 && byte(i + 2) <= 0xAE) ||
                                           (byte(i + 1) == 0x81 && byte(i + 2) >= 0xA6 && byte(i + 2) <= 0xA9));
    Check(!ascii_control && !latin_control && !turns, "a shown text has no control characters");
  }
}

} // namespace kelmio::fuzz

// Damage done to well-formed input, the same for the same random numbers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>

namespace kelmio::fuzz {

/// Changes a few places of `text`: bytes, cuts, repeats, pieces of `other`, runs of one letter, numbers grown huge.
inline std::string Mutated(std::string text, const std::string& other, std::mt19937& random) {
  constexpr std::size_t kLongest = 8000;
  const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
  for (std::size_t changes = 1 + below(6); changes > 0 && !text.empty(); --changes) {
    const std::size_t at = below(text.size());
    const std::size_t length = std::min(text.size() - at, 1 + below(24));
    switch (below(9)) {
    case 0:
      text[at] = static_cast<char>(random());
      break;
    case 1:
      text.erase(at, length);
      break;
    case 2:
      text.insert(at, text.substr(at, length));
      break;
    case 3:
      text.insert(at, std::string(below(3000), "A%\"<;\r\n\x10"[below(8)]));
      break;
    case 4:
      text.insert(at, std::to_string(random()) + std::to_string(random()));
      break;
    case 5:
      text.resize(at);
      break;
    case 6:
      text.insert(at, "\r\n");
      break;
    case 7:
      text[at] = static_cast<char>(text[at] ^ (1 << below(8)));
      break;
    default:
      if (!other.empty())
        text.insert(at, other.substr(below(other.size()), 1 + below(64)));
      break;
    }
  }
  return text.substr(0, kLongest);
}

} // namespace kelmio::fuzz

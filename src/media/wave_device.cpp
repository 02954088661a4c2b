#include "media/wave_device.h"

#include <algorithm>

#include "media/wave_file.h"

namespace kelmio {
namespace {

bool IsWord(std::string_view text, std::string_view lower_case_word) {
  return std::equal(text.begin(), text.end(), lower_case_word.begin(), lower_case_word.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b; });
}

} // namespace

void WaveDevice::Command(std::string_view word) {
  if (IsWord(word, "open"))
    length_ = WaveLength(path_).value_or(0);
  else if (IsWord(word, "close"))
    length_ = 0;
}

} // namespace kelmio

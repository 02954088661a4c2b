#pragma once

#include <string>
#include <string_view>

namespace kelmio::emulated {

inline constexpr unsigned char Dle = 0x10;
inline constexpr unsigned char Etx = 0x03;
inline constexpr unsigned char Can = 0x18;
inline constexpr unsigned char Sub = 0x1A;
inline constexpr unsigned char Esc = 0x1B;

// Sample bytes made safe for the line: each 0x10 doubled.
inline std::string Shield(std::string_view samples) {
  std::string shielded;
  for (const char sample : samples) {
    shielded.append(static_cast<unsigned char>(sample) == Dle ? 2U : 1U, sample);
  }
  return shielded;
}

// Tells samples from codes in a stream of bytes. A pair may be split between two reads.
class DleReader {
public:
  struct Item {
    std::string samples;    // zero, one or two sample bytes
    unsigned char code = 0; // what followed a DLE, when `is_code`
    bool is_code = false;
  };

  Item Take(unsigned char byte) {
    if (!after_dle_) {
      after_dle_ = byte == Dle;
      return after_dle_ ? Item{} : Item{std::string(1, static_cast<char>(byte)), 0, false};
    }
    after_dle_ = false;
    if (byte == Dle || byte == Sub) {
      return {std::string(byte == Dle ? 1U : 2U, static_cast<char>(Dle)), 0, false};
    }
    return {{}, byte, true};
  }

  void Reset() { after_dle_ = false; }

private:
  bool after_dle_ = false;
};

} // namespace kelmio::emulated

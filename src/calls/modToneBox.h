// Tones of two frequencies for the desk's own ears.
#pragma once

#include <cstdint>

#include "calls/modWAV.h"

namespace kelmio::modToneBox {

inline constexpr double kKeyToneSeconds = 0.25;

/// Low and high frequency in hertz.
struct TonePair {
  std::int16_t low = 0;
  std::int16_t high = 0;
};

/// The pair at a place, from 1 to 16, of the standard's grid (ITU-T Q.23), row by row. The keypad counts its own keys
/// in three columns and the grid has four, so that from "4" on a key doesn't sound as on the line: a key tone is local.
TonePair PairOfKey(std::int16_t key_number);

/// The wave image of a pair.
WaveImage MakeTonePair(TonePair pair, double seconds);

/// Plays the pair and returns at its end. It is never heard on the telephone line.
void PlayTonePair(WaveImagePlayer& player, std::int16_t low_frequency, std::int16_t high_frequency, double seconds);

} // namespace kelmio::modToneBox

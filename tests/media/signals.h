// Sounds made by arithmetic, 8000 samples per second unless said otherwise.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kelmio::test {

using Samples = std::vector<std::int16_t>;

/// Levels are in decibels against a full-scale square wave; a sine at full scale has -3.
Samples Sines(std::initializer_list<double> hertz, double level, double seconds, int rate = 8000);
Samples Noise(double level, double seconds);
Samples Quiet(double seconds);
/// Voiced syllables with a moving pitch, fricatives and short pauses, as a speaker without a long pause.
Samples Speech(double level, double seconds, unsigned seed = 1);

Samples operator+(Samples a, const Samples& b); // one after the other
Samples Mix(Samples a, const Samples& b);       // both at once, as long as the first
Samples Repeat(const Samples& part, int times);
/// Through mu-law and back, as a telephone network does.
Samples ThroughMuLaw(Samples samples);

/// Mean power in decibels against a full-scale square wave.
double LevelOf(std::span<const std::int16_t> samples);
/// Of `heard` against `original`: how far their difference lies below the original, in decibels.
double SignalToNoise(std::span<const std::int16_t> original, std::span<const std::int16_t> heard);

} // namespace kelmio::test

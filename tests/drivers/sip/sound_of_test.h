// A voice-like signal, and how well it came through.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <span>
#include <vector>

namespace kelmio {

/// Gliding harmonics with pauses, at `rate` samples per second; the same every time.
inline std::vector<std::int16_t> VoiceOfTest(double seconds, int rate = 8000) {
  std::vector<std::int16_t> samples(static_cast<std::size_t>(seconds * rate));
  double phase = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double t = static_cast<double>(i) / rate;
    phase += 2 * std::numbers::pi * (140 + 25 * std::sin(2 * std::numbers::pi * 0.6 * t)) / rate;
    const double swell = std::max(0.0, std::sin(2 * std::numbers::pi * 0.9 * t) + 0.6);
    double value = 0;
    for (int harmonic = 1; harmonic <= 12; ++harmonic)
      value += std::sin(harmonic * phase) / harmonic;
    samples[i] = static_cast<std::int16_t>(std::lround(4500 * swell * value));
  }
  return samples;
}

/// The offset in `heard`, a multiple of `step` and at most a quarter second at 16000 samples, at which `said` matches
/// best.
inline std::size_t OffsetOf(std::span<const std::int16_t> said, std::span<const std::int16_t> heard, std::size_t step) {
  std::size_t best = 0;
  double best_match = -1;
  constexpr std::size_t kFurthest = 4000;
  constexpr std::size_t kCompared = 8000;
  for (std::size_t offset = 0; offset <= kFurthest && offset < heard.size(); offset += step) {
    double match = 0;
    for (std::size_t i = 0; i < std::min(said.size(), kCompared) && offset + i < heard.size(); i += 3)
      match += static_cast<double>(said[i]) * heard[offset + i];
    if (match > best_match) {
      best_match = match;
      best = offset;
    }
  }
  return best;
}

struct Fidelity {
  double correlation = 0;
  double level_change = 0; // decibels
};

inline Fidelity FidelityOf(std::span<const std::int16_t> said, std::span<const std::int16_t> heard) {
  double cross = 0;
  double said_power = 0;
  double heard_power = 0;
  for (std::size_t i = 0; i < said.size() && i < heard.size(); ++i) {
    cross += static_cast<double>(said[i]) * heard[i];
    said_power += static_cast<double>(said[i]) * said[i];
    heard_power += static_cast<double>(heard[i]) * heard[i];
  }
  return {cross / std::sqrt(said_power * heard_power), 10 * std::log10(heard_power / said_power)};
}

/// Frames of 20 ms whose error is above a tenth of their power.
inline int DamagedFrames(std::span<const std::int16_t> said, std::span<const std::int16_t> heard, std::size_t frame) {
  int damaged = 0;
  for (std::size_t start = 0; start + frame <= said.size(); start += frame) {
    double error = 0;
    double power = 0;
    for (std::size_t i = start; i < start + frame; ++i) {
      const double there = i < heard.size() ? heard[i] : 0;
      error += (said[i] - there) * (said[i] - there);
      power += static_cast<double>(said[i]) * said[i];
    }
    constexpr double kAudible = 400; // mean square of an error that is heard at all
    if (error / static_cast<double>(frame) > kAudible && error > power / 10)
      ++damaged;
  }
  return damaged;
}

} // namespace kelmio

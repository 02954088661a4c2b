#include "media/signals.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "media/spandsp.h"

namespace kelmio::test {
namespace {

constexpr int kRate = 8000;

std::int16_t Clip(double value) {
  return static_cast<std::int16_t>(std::lround(std::clamp(value, -32768.0, 32767.0)));
}

std::size_t Count(double seconds, int rate = kRate) {
  return static_cast<std::size_t>(std::lround(seconds * rate));
}

// A two-pole resonance, for the formants of a vowel.
struct Resonance {
  double hertz, width, y1 = 0, y2 = 0;
  double operator()(double x) {
    const double r = std::exp(-std::numbers::pi * width / kRate);
    const double y = x + 2 * r * std::cos(2 * std::numbers::pi * hertz / kRate) * y1 - r * r * y2;
    y2 = y1;
    return y1 = y;
  }
};

} // namespace

Samples Sines(std::initializer_list<double> hertz, double level, double seconds, int rate) {
  Samples out(Count(seconds, rate));
  const double amplitude = 32768.0 * std::pow(10.0, level / 20) * std::sqrt(2.0 / static_cast<double>(hertz.size()));
  for (std::size_t i = 0; i < out.size(); ++i) {
    double sum = 0;
    for (const double each : hertz)
      sum += std::sin(2 * std::numbers::pi * each * static_cast<double>(i) / rate);
    out[i] = Clip(amplitude * sum);
  }
  return out;
}

Samples Noise(double level, double seconds) {
  std::mt19937 random(7);
  std::normal_distribution<double> normal(0, 32768.0 * std::pow(10.0, level / 20));
  Samples out(Count(seconds));
  for (auto& sample : out)
    sample = Clip(normal(random));
  return out;
}

Samples Quiet(double seconds) {
  return Samples(Count(seconds));
}

Samples Speech(double level, double seconds, unsigned seed) {
  constexpr double kVowels[][3] = {
      {730, 1090, 2440}, {270, 2290, 3010}, {300, 870, 2240}, {530, 1840, 2480}, {570, 840, 2410}};
  std::mt19937 random(seed);
  const auto between = [&random](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  std::vector<double> wave;
  while (wave.size() < Count(seconds)) {
    const double* vowel = kVowels[random() % 5];
    Resonance formants[] = {{vowel[0], 70}, {vowel[1], 100}, {vowel[2], 150}};
    const double pitch_begin = between(90, 230);
    const double pitch_end = pitch_begin * between(0.8, 1.2);
    const std::size_t length = Count(between(0.12, 0.3));
    double phase = 0;
    for (std::size_t i = 0; i < length; ++i) {
      const double place = static_cast<double>(i) / static_cast<double>(length);
      phase += (pitch_begin + (pitch_end - pitch_begin) * place) / kRate;
      double sample = phase >= 1 ? (phase -= 1, 1.0) : 0.0;
      for (Resonance& formant : formants)
        sample = formant(sample);
      wave.push_back(sample * std::sin(std::numbers::pi * place));
    }
    for (std::size_t i = Count(between(0.02, 0.08)); i > 0; --i)
      wave.push_back(between(-2, 2));
    wave.resize(wave.size() + Count(between(0.0, 0.12)));
  }
  wave.resize(Count(seconds));
  double power = 0;
  for (const double sample : wave)
    power += sample * sample / static_cast<double>(wave.size());
  const double gain = 32768.0 * std::pow(10.0, level / 20) / std::sqrt(power);
  Samples out(wave.size());
  std::transform(wave.begin(), wave.end(), out.begin(), [gain](double sample) { return Clip(gain * sample); });
  return out;
}

Samples operator+(Samples a, const Samples& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Samples Mix(Samples a, const Samples& b) {
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    a[i] = Clip(a[i] + b[i]);
  return a;
}

Samples Repeat(const Samples& part, int times) {
  Samples out;
  for (int i = 0; i < times; ++i)
    out = std::move(out) + part;
  return out;
}

Samples ThroughMuLaw(Samples samples) {
  for (auto& sample : samples)
    sample = ulaw_to_linear(linear_to_ulaw(sample));
  return samples;
}

double LevelOf(std::span<const std::int16_t> samples) {
  double power = 0;
  for (const double sample : samples)
    power += sample * sample / static_cast<double>(samples.size());
  return 10 * std::log10(power / (32768.0 * 32768.0) + 1e-12);
}

double SignalToNoise(std::span<const std::int16_t> original, std::span<const std::int16_t> heard) {
  Samples difference(original.begin(), original.end());
  for (std::size_t i = 0; i < difference.size(); ++i)
    difference[i] = Clip(original[i] - (i < heard.size() ? heard[i] : 0));
  return LevelOf(original) - LevelOf(difference);
}

} // namespace kelmio::test

#include "drivers/sip/concealment.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelmio {

namespace {

constexpr std::size_t kHistoryMilliseconds = 80;
// Speech keeps its character over some 60 ms; what is made up beyond that would hum.
constexpr std::size_t kFadeMilliseconds = 60;
constexpr std::size_t kBlendMilliseconds = 4;
// Long enough to hold one period of the lowest voices at 8000 samples a second.
constexpr std::size_t kOrder = 100;
// The predictor is made a little lossy, so that what it continues dies away rather than swells.
constexpr double kLoss = 0.9995;

/// Coefficients by Burg's method: x[n] is predicted as the sum of c[k] * x[n - 1 - k].
std::vector<double> Predictor(std::span<const double> known, std::size_t order) {
  std::vector<double> forward(known.begin(), known.end());
  std::vector<double> backward = forward;
  std::vector<double> polynomial(order + 1, 0.0);
  polynomial[0] = 1;
  const std::size_t count = known.size();
  for (std::size_t m = 0; m < order; ++m) {
    double cross = 0;
    double power = 0;
    for (std::size_t n = m + 1; n < count; ++n) {
      cross += forward[n] * backward[n - 1];
      power += forward[n] * forward[n] + backward[n - 1] * backward[n - 1];
    }
    // Below a fraction of one step of a sample there is nothing left to predict.
    if (power < 1e-3 * static_cast<double>(count))
      break;
    const double reflection = -2 * cross / power;
    std::vector<double> next = polynomial;
    for (std::size_t k = 1; k <= m + 1; ++k)
      next[k] += reflection * polynomial[m + 1 - k];
    polynomial = std::move(next);
    for (std::size_t n = count - 1; n > m; --n) {
      const double f = forward[n];
      forward[n] = f + reflection * backward[n - 1];
      backward[n] = backward[n - 1] + reflection * f;
    }
  }
  std::vector<double> coefficients(order);
  double loss = 1;
  for (std::size_t k = 0; k < order; ++k) {
    loss *= kLoss;
    coefficients[k] = -polynomial[k + 1] * loss;
  }
  return coefficients;
}

std::vector<double> Continue(std::span<const double> known, std::size_t count) {
  // The order stays well below the material it is drawn from.
  const std::size_t order = std::min(kOrder, known.size() / 2);
  if (order == 0)
    return std::vector<double>(count, 0.0);
  const std::vector<double> coefficients = Predictor(known, order);
  std::vector<double> sound(known.begin(), known.end());
  sound.reserve(known.size() + count);
  for (std::size_t n = 0; n < count; ++n) {
    double value = 0;
    for (std::size_t k = 0; k < order; ++k)
      value += coefficients[k] * sound[sound.size() - 1 - k];
    sound.push_back(std::clamp(value, -32768.0, 32767.0));
  }
  return {sound.end() - static_cast<std::ptrdiff_t>(count), sound.end()};
}

std::int16_t ToSample(double value) {
  return static_cast<std::int16_t>(std::lround(std::clamp(value, -32768.0, 32767.0)));
}

} // namespace

Concealment::Concealment(int rate)
    : history_length_(kHistoryMilliseconds * static_cast<std::size_t>(rate) / 1000),
      fade_length_(kFadeMilliseconds * static_cast<std::size_t>(rate) / 1000),
      blend_length_(kBlendMilliseconds * static_cast<std::size_t>(rate) / 1000) {}

void Concealment::Reset() {
  history_.clear();
  tail_.clear();
  bridge_.clear();
  missing_ = 0;
}

void Concealment::Remember(std::span<const std::int16_t> samples) {
  history_.insert(history_.end(), samples.begin(), samples.end());
  if (history_.size() > history_length_)
    history_.erase(history_.begin(), history_.end() - static_cast<std::ptrdiff_t>(history_length_));
}

void Concealment::Heard(std::span<std::int16_t> samples) {
  const std::size_t blend = std::min(tail_.size(), samples.size());
  for (std::size_t i = 0; i < blend; ++i) {
    const double in = static_cast<double>(i + 1) / static_cast<double>(blend + 1);
    samples[i] = ToSample(in * samples[i] + (1 - in) * tail_[i]);
  }
  tail_.clear();
  bridge_.clear();
  missing_ = 0;
  Remember(samples);
}

void Concealment::Fill(std::span<std::int16_t> hole, std::size_t more, std::span<const std::int16_t> after) {
  if (bridge_.empty() && !after.empty() && missing_ + hole.size() + more <= fade_length_)
    Bridge(hole.size() + more, after);
  if (bridge_.size() >= hole.size()) {
    const auto end = bridge_.begin() + static_cast<std::ptrdiff_t>(hole.size());
    std::copy(bridge_.begin(), end, hole.begin());
    bridge_.erase(bridge_.begin(), end);
  } else {
    FadeOut(hole);
  }
  missing_ += hole.size();
  Remember(hole);
}

void Concealment::Bridge(std::size_t count, std::span<const std::int16_t> after) {
  const std::vector<double> forward = Continue(history_, count);
  const std::vector<double> reversed(after.rbegin(), after.rend());
  const std::vector<double> backward = Continue(reversed, count);
  bridge_.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double place = (static_cast<double>(i) + 0.5) / static_cast<double>(count);
    const double out = 0.5 * (1 + std::cos(std::numbers::pi * place));
    bridge_[i] = ToSample(out * forward[i] + (1 - out) * backward[count - 1 - i]);
  }
  tail_.clear();
}

void Concealment::FadeOut(std::span<std::int16_t> hole) {
  bridge_.clear();
  tail_.clear();
  if (missing_ >= fade_length_) {
    std::fill(hole.begin(), hole.end(), std::int16_t{0});
    return;
  }
  std::vector<double> forward = Continue(history_, hole.size() + blend_length_);
  for (std::size_t i = 0; i < forward.size(); ++i) {
    const double gone = static_cast<double>(missing_ + i) / static_cast<double>(fade_length_);
    forward[i] *= std::max(0.0, 1 - gone * gone);
  }
  for (std::size_t i = 0; i < hole.size(); ++i)
    hole[i] = ToSample(forward[i]);
  tail_.assign(forward.begin() + static_cast<std::ptrdiff_t>(hole.size()), forward.end());
}

} // namespace kelmio

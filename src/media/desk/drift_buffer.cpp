#include "media/desk/drift_buffer.h"

#include <algorithm>
#include <cmath>

namespace kelmio {
namespace {

constexpr std::size_t Samples(std::size_t milliseconds) {
  return milliseconds * kDeskRate / 1000;
}

/// After a stall no more than this is kept for later.
constexpr std::size_t kRoom = Samples(400);
/// A network or a desktop that is late by three frames at a time needs some 90 ms; more is the remains of a stall.
constexpr std::size_t kMost = Samples(120);

/// What the resampler needs of the sound to come.
constexpr std::size_t kInResampler = Samples(4);
/// With so much in hand the sound begins. A frame and the resampler's part go at once, and the next stretch may be
/// nearly a frame away.
constexpr std::size_t kBegin = Samples(20) + kInResampler + Samples(20);
/// What is to be left when the next stretch comes.
constexpr auto kReserve = static_cast<double>(Samples(8));
/// A taker that hasn't come for longer than its longest frame has stopped.
constexpr auto kMostTaken = static_cast<double>(Samples(60));
constexpr double kNotPut = kRoom;
/// A shortage is remembered: the least that was left is forgotten by a millisecond a second.
constexpr double kForgetPerSecond = Samples(1);
/// Ten milliseconds off the reserve change the speed by a part in a thousand.
constexpr double kSpeedPerSample = 0.001 / static_cast<double>(Samples(10));
/// Clocks differ by 0.0003 at the worst.
constexpr double kMostSpeed = 0.002;
/// The speed glides to what it should be with this time constant.
constexpr double kGlideSeconds = 1.0;

/// A break in the sound is smoothed over 5 ms.
constexpr int kRampsPerSecond = 200;

} // namespace

DriftBuffer::DriftBuffer(Now now) : now_(now), ring_(kRoom), left_(kNotPut), least_(kReserve) {}

void DriftBuffer::Put(std::span<const std::int16_t> samples, int rate) noexcept {
  const Clock::time_point taken_at{Clock::duration(taken_at_.load(std::memory_order_relaxed))};
  const double taken_since = std::chrono::duration<double>(now_() - taken_at).count() * kDeskRate;
  const double left = static_cast<double>(kRoom - ring_.Room()) - std::min(taken_since, kMostTaken);
  if (left < left_.load(std::memory_order_relaxed))
    left_.store(left, std::memory_order_relaxed);
  to_desk_rate_.Put(samples, rate, [this](std::span<const std::int16_t> converted) { ring_.Put(converted); });
}

void DriftBuffer::Take(std::span<std::int16_t> frame, int rate) noexcept {
  const double left = left_.exchange(kNotPut, std::memory_order_relaxed);
  const std::size_t held = Held();
  // A full ring has turned sound away, and what follows doesn't join on.
  if (held > kMost)
    Skip(held >= kRoom ? held + kInResampler : held - kBegin, rate);
  if (gathering_ && Held() >= kBegin) {
    gathering_ = false;
    BeginRamp(rate);
  } else if (!gathering_) {
    // In the first moments of a call nobody misses what is too much.
    if (!trimmed_ && left != kNotPut) {
      trimmed_ = true;
      Skip(static_cast<std::size_t>(std::max(left - kReserve, 0.0)), rate);
    }
    Follow(left, static_cast<double>(frame.size()) / rate);
  }
  std::size_t filled = 0;
  if (!gathering_) {
    const double ratio = static_cast<double>(rate) / kDeskRate * (1.0 - speed_);
    filled = Convert(frame, ratio);
    Ramp(frame.first(filled));
    if (filled < frame.size()) {
      gathering_ = true;
      least_ = 0;
      BeginRamp(rate);
    }
  }
  const auto missing = frame.subspan(filled);
  std::ranges::fill(missing, std::int16_t{0});
  Ramp(missing);
  taken_at_.store(now_().time_since_epoch().count(), std::memory_order_relaxed);
}

std::size_t DriftBuffer::Convert(std::span<std::int16_t> frame, double ratio) noexcept {
  std::size_t filled = 0;
  while (filled < frame.size()) {
    if (portion_begin_ == portion_end_) {
      // By small portions: the resampler keeps what it is given, and that would count as gone.
      portion_begin_ = 0;
      portion_end_ = ring_.Take(portion_);
    }
    const auto portion = std::span<const std::int16_t>(portion_).subspan(portion_begin_, portion_end_ - portion_begin_);
    const Resampler::Step step = resampler_.Convert(portion, frame.subspan(filled), ratio, false);
    portion_begin_ += step.used;
    filled += step.made;
    if (step.used == 0 && step.made == 0)
      break;
  }
  return filled;
}

void DriftBuffer::Skip(std::size_t samples, int rate) noexcept {
  if (samples == 0)
    return;
  portion_begin_ = portion_end_ = 0;
  // The resampler's part goes, and is taken anew.
  for (std::size_t skipped = std::min(samples, kInResampler); skipped < samples;) {
    const std::size_t count = ring_.Take(std::span(portion_).first(std::min(portion_.size(), samples - skipped)));
    if (count == 0)
      break;
    skipped += count;
  }
  resampler_.Reset();
  BeginRamp(rate);
}

void DriftBuffer::Follow(double left, double seconds) noexcept {
  least_ = std::min(std::max(left, 0.0), least_ + kForgetPerSecond * seconds);
  const double wanted = std::clamp((least_ - kReserve) * kSpeedPerSample, -kMostSpeed, kMostSpeed);
  speed_ += (wanted - speed_) * std::min(seconds / kGlideSeconds, 1.0);
}

void DriftBuffer::BeginRamp(int rate) noexcept {
  ramp_from_ = last_;
  ramp_length_ = ramp_left_ = static_cast<std::size_t>(std::max(rate / kRampsPerSecond, 1));
}

void DriftBuffer::Ramp(std::span<std::int16_t> frame) noexcept {
  for (std::int16_t& sample : frame) {
    if (ramp_left_ == 0)
      break;
    const double old = static_cast<double>(ramp_left_--) / static_cast<double>(ramp_length_);
    sample = static_cast<std::int16_t>(std::lround(old * ramp_from_ + (1.0 - old) * sample));
  }
  if (!frame.empty())
    last_ = frame.back();
}

} // namespace kelmio

#include "drivers/sip/ring_back_tone.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <numbers>
#include <utility>

namespace kelmio {

namespace {

constexpr int kRate = 8000;
constexpr std::chrono::milliseconds kFrameTime{20};
constexpr std::size_t kFrame = kRate / 50;
// A process that stood still for longer has no sound to make up for.
constexpr std::uint64_t kMostFrames = 10;
constexpr double kHertz = 425;
constexpr double kAmplitude = 4000; // -15 dBm0; the loudest sine of 16 bits has 3.14 dBm0
constexpr std::uint64_t kOn = kRate;
constexpr std::uint64_t kPeriod = 5 * kOn;

} // namespace

void RingBackTone::Start() {
  if (std::exchange(sounds_, true))
    return;
  sample_ = 0;
  timer_.StartRepeating(kFrameTime, kFrameTime, [this](std::uint64_t elapsed) { Sound(elapsed); });
}

void RingBackTone::Stop() {
  timer_.Stop();
  sounds_ = false;
}

void RingBackTone::Sound(std::uint64_t frames) {
  for (std::uint64_t i = 0; i < std::min(frames, kMostFrames); ++i) {
    std::array<std::int16_t, kFrame> frame{};
    for (std::int16_t& sample : frame) {
      const std::uint64_t at = sample_++ % kPeriod;
      const double angle = 2 * std::numbers::pi * kHertz * static_cast<double>(at) / kRate;
      sample = at < kOn ? static_cast<std::int16_t>(std::lround(kAmplitude * std::sin(angle))) : std::int16_t{0};
    }
    if (port_)
      port_->Received(frame, kRate);
  }
}

} // namespace kelmio

// The sound of a call, as a driver's test gives and takes it.
#pragma once

#include <cstdint>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// Keeps what is received, and says a fixed sound.
class PortOfTest : public SoundPort {
public:
  void Received(std::span<const std::int16_t> samples, int rate) noexcept override {
    const std::lock_guard lock(mutex_);
    rate_ = rate;
    ++frames_;
    received_.insert(received_.end(), samples.begin(), samples.end());
  }
  void ToSend(std::span<std::int16_t> samples, int) noexcept override {
    const std::lock_guard lock(mutex_);
    for (auto& sample : samples)
      sample = position_ < say_.size() ? say_[position_++] : std::int16_t{0};
  }
  bool Speaks() const noexcept override {
    const std::lock_guard lock(mutex_);
    return position_ < say_.size();
  }
  void Say(std::vector<std::int16_t> samples) {
    const std::lock_guard lock(mutex_);
    say_ = std::move(samples);
    position_ = 0;
  }
  std::vector<std::int16_t> Received() const {
    const std::lock_guard lock(mutex_);
    return received_;
  }
  std::size_t Frames() const {
    const std::lock_guard lock(mutex_);
    return frames_;
  }
  int Rate() const {
    const std::lock_guard lock(mutex_);
    return rate_;
  }

private:
  mutable std::mutex mutex_;
  std::vector<std::int16_t> received_;
  std::vector<std::int16_t> say_;
  std::size_t position_ = 0;
  std::size_t frames_ = 0;
  int rate_ = 0;
};

} // namespace kelmio

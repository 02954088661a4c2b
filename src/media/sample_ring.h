// A ring of samples between one thread that puts and one that takes.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

namespace kelmio {

/// Lock-free for one putting and one taking thread at a time; allocates only when made.
class SampleRing {
public:
  explicit SampleRing(std::size_t capacity) : data_(std::max<std::size_t>(capacity, 1)) {}

  /// Takes over as many samples as there is room for, and gives their count.
  std::size_t Put(std::span<const std::int16_t> samples) noexcept {
    const std::uint64_t put = put_.load(std::memory_order_relaxed);
    const std::uint64_t used = put - taken_.load(std::memory_order_acquire);
    const std::size_t count = std::min(samples.size(), data_.size() - static_cast<std::size_t>(used));
    for (std::size_t i = 0; i < count; ++i)
      data_[(put + i) % data_.size()] = samples[i];
    put_.store(put + count, std::memory_order_release);
    return count;
  }

  /// Fills the front of `out` with the oldest samples, and gives their count.
  std::size_t Take(std::span<std::int16_t> out) noexcept {
    const std::uint64_t taken = taken_.load(std::memory_order_relaxed);
    const std::uint64_t held = put_.load(std::memory_order_acquire) - taken;
    const std::size_t count = std::min(out.size(), static_cast<std::size_t>(held));
    for (std::size_t i = 0; i < count; ++i)
      out[i] = data_[(taken + i) % data_.size()];
    taken_.store(taken + count, std::memory_order_release);
    return count;
  }

  /// Samples held; the taking thread's view.
  std::size_t Held() const noexcept {
    return static_cast<std::size_t>(put_.load(std::memory_order_acquire) - taken_.load(std::memory_order_relaxed));
  }

  /// Room left; the putting thread's view.
  std::size_t Room() const noexcept {
    return data_.size() -
           static_cast<std::size_t>(put_.load(std::memory_order_relaxed) - taken_.load(std::memory_order_acquire));
  }

private:
  std::vector<std::int16_t> data_;
  std::atomic<std::uint64_t> put_{0}; // running totals, never wrapped
  std::atomic<std::uint64_t> taken_{0};
};

} // namespace kelmio

// Keeps one sender of requests from occupying the line's engine.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>

namespace kelmio {

/// A token bucket for each of a fixed number of source slots, and one for all of them together. Pure code: the
/// caller gives the time. Any one thread.
class RateLimiter {
public:
  using Time = std::chrono::steady_clock::time_point;

  /// `per_second` requests of one source pass in the long run, `burst` at once. A source that asks for more gets
  /// nothing until it has asked for less for a while.
  RateLimiter(double per_second, double burst);

  /// Whether a request of this source may be looked at now. `source` is any hash of its address; sources that
  /// share a slot share its allowance.
  bool Allow(std::uint32_t source, Time now);

private:
  struct Bucket {
    double tokens = 0;
    Time filled{};
    bool used = false;
  };
  // All sources together may ask for this many times what one may.
  static constexpr double kTogether = 10;

  static bool Take(Bucket& bucket, double per_second, double burst, Time now);

  double per_second_;
  double burst_;
  std::array<Bucket, 256> slots_{};
  Bucket all_;
};

} // namespace kelmio

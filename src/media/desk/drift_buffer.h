// Carries sound from a thread with one clock to a thread with another.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>

#include "media/desk_stream.h"
#include "media/resampler.h"
#include "media/sample_ring.h"

namespace kelmio {

/// A sound card and a line each count 20 milliseconds by their own crystal, and neither comes to the moment. This
/// holds just enough sound for the taker never to find it empty, and keeps it at that by taking it a little faster or
/// slower than it came: at most by a part in five hundred, which nobody hears. What counts is what is left when the
/// next sound comes, had the taker taken evenly until then: so the beat of two clocks that slide past each other
/// doesn't matter.
///
/// Sound goes through unbroken until the taker really finds nothing. Then silence fades in, until a reserve has
/// gathered again, which from then on holds what made it run dry; in calm times the delay shrinks back slowly. Where
/// one side has stood still and far too much has piled up, the oldest is left out at once.
///
/// One putting and one taking thread, which never wait for each other. Allocates only when made.
class DriftBuffer {
public:
  using Clock = std::chrono::steady_clock;
  using Now = Clock::time_point (*)();

  /// `now` tells the time on both threads.
  explicit DriftBuffer(Now now = Clock::now);

  /// Putting thread. `rate` is that of this stretch.
  void Put(std::span<const std::int16_t> samples, int rate) noexcept;
  /// Taking thread. Fills the whole frame; `rate` is that of this frame.
  void Take(std::span<std::int16_t> frame, int rate) noexcept;

  /// Taking thread. Samples that wait, at `kDeskRate`.
  std::size_t Held() const noexcept { return ring_.Held() + (portion_end_ - portion_begin_); }

private:
  std::size_t Convert(std::span<std::int16_t> frame, double ratio) noexcept;
  void Skip(std::size_t samples, int rate) noexcept;
  void Follow(double left, double seconds) noexcept;
  void BeginRamp(int rate) noexcept;
  void Ramp(std::span<std::int16_t> frame) noexcept;

  const Now now_;

  // Putting thread.
  FixedRate to_desk_rate_{kDeskRate};

  SampleRing ring_;
  std::atomic<Clock::rep> taken_at_{0};
  std::atomic<double> left_; // the least that was left before a put, since the taker asked last

  // Taking thread.
  Resampler resampler_{Resampler::AtRatioOne::Filter};
  std::array<std::int16_t, 32> portion_{}; // taken from the ring, not yet converted
  std::size_t portion_begin_ = 0;
  std::size_t portion_end_ = 0;
  bool gathering_ = true;
  bool trimmed_ = false; // to the reserve, once the sound had begun
  double least_;         // what was left before a put, at the least of the last while, in samples
  double speed_ = 0;     // by how much faster than it came the sound is taken
  // From `ramp_from_` to the sound as it is, in `ramp_length_` samples, of which `ramp_left_` are to come.
  double ramp_from_ = 0;
  std::size_t ramp_length_ = 1;
  std::size_t ramp_left_ = 0;
  std::int16_t last_ = 0; // given
};

} // namespace kelmio

// The telephone that microphone and loudspeaker make for one call.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "media/desk/drift_buffer.h"
#include "media/desk/echo_canceller.h"
#include "media/desk_stream.h"

namespace kelmio {

/// Stands between the thread of the stream and the sound thread of the line. Each calls its own operations only, and
/// they never wait for each other. Allocates only when made.
class DeskHandset : public DeskClient {
public:
  /// `now` tells the time on both threads.
  explicit DeskHandset(DriftBuffer::Now now = DriftBuffer::Clock::now) : to_play_(now), to_say_(now) {}

  // Stream's thread.
  void ToPlay(std::span<std::int16_t> frame) noexcept override;
  void Captured(std::span<const std::int16_t> frame, int echo_delay_ms) noexcept override;

  // Sound thread of the line; `rate` may change within a call.
  /// What the far side says.
  void Hear(std::span<const std::int16_t> samples, int rate) noexcept { to_play_.Put(samples, rate); }
  /// Adds what the user says, saturating.
  void AddSaid(std::span<std::int16_t> frame, int rate) noexcept;

private:
  DriftBuffer to_play_;
  DriftBuffer to_say_;
  EchoCanceller echo_; // stream's thread only
};

} // namespace kelmio

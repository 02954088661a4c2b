// The sound card as a player of wave files that stand in memory.
#pragma once

#include <cstddef>
#include <span>

namespace kelmio {

/// User interface thread only. Local sound: nothing of it reaches the telephone line.
class WaveImagePlayer {
public:
  virtual ~WaveImagePlayer() = default;
  /// Plays a complete wave file image (16-bit PCM) to its end before it returns; no event runs meanwhile. False, at
  /// once, where there is no sound device or the image can't be played.
  virtual bool Play(std::span<const std::byte> image) = 0;
  /// Ends a sound that plays.
  virtual void Stop() = 0;
};

} // namespace kelmio

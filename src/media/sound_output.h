// Where the sound of the desk goes.
#pragma once

#include <functional>
#include <memory>

#include "media/wave_file.h"

namespace kelmio {

/// Plays one sound at a time. User interface thread only; no call waits for the sound.
class SoundOutput {
public:
  virtual ~SoundOutput() = default;

  /// Plays `sound` from where it stands to its end, in the place of what played before. False when there is no
  /// sound device: nothing is heard then, but the time runs on as if it were.
  virtual bool Start(std::unique_ptr<WaveReader> sound) = 0;
  /// Silence at once. Nothing happens when nothing plays.
  virtual void Stop() = 0;
  /// Milliseconds heard since the start. It goes on beyond the end of the sound.
  virtual long Heard() const = 0;

  /// The sound device has gone while the sound played; not called within another call. Assigned by the owner.
  std::function<void()> Lost = [] {};
};

} // namespace kelmio

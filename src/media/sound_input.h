// Where the sound of the desk comes from.
#pragma once

#include <cstdint>
#include <vector>

namespace kelmio {

/// Samples a second. Speech loses nothing at it that any telephone line could carry; a line of 8000 gets it resampled.
inline constexpr int kMicrophoneRate = 16000;

/// Listens to the microphone, as mono 16-bit samples. They wait until they are fetched, so whoever listens needs no
/// thread of its own. User interface thread only; no call waits for sound.
class SoundInput {
public:
  virtual ~SoundInput() = default;

  /// Begins to listen anew; what was heard before and not fetched is dropped. A device may take seconds to begin, and
  /// one that hangs never does: whoever listens sets the limit for that.
  virtual void Start() = 0;
  /// Ends the listening. What was heard until now can still be fetched.
  virtual void Stop() = 0;
  /// There is no microphone, or it has gone since the start.
  virtual bool Lost() const = 0;
  /// What was heard since the last call. More than a minute isn't kept.
  virtual std::vector<std::int16_t> Take() = 0;
};

} // namespace kelmio

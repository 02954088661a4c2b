// The microphone of the desk on the desktop's sound server.
#pragma once

#include <memory>

#include "media/sound_input.h"

namespace kelmio {

class PulseHeard;
class PulseThread;

/// The default microphone of the moment; the server moves the sound along when the user chooses another. A thread and a
/// connection of its own run from start to stop, and nothing in between. Other streams from the same microphone don't
/// matter. User interface thread only.
class PulseSoundInput : public SoundInput {
public:
  PulseSoundInput();
  ~PulseSoundInput() override;

  void Start() override;
  /// Waits a fraction of a second at most, also for a library that hangs.
  void Stop() override;
  bool Lost() const override;
  std::vector<std::int16_t> Take() override;

private:
  std::shared_ptr<PulseHeard> heard_; // since the last start
  std::unique_ptr<PulseThread> thread_;
};

} // namespace kelmio

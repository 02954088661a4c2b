// Short sounds from memory, on the desktop's sound server.
#pragma once

#include "platform/wave_image_player.h"

namespace kelmio {

/// Plays 8 and 16-bit PCM of any rate, one channel or two, through the default device of the moment. Each sound has a
/// connection of its own, so nothing runs in between. It waits no longer than a second or two for a server or device
/// that hangs, beyond the length of the sound.
class PulseWaveImagePlayer : public WaveImagePlayer {
public:
  /// True once the sound has been heard to its end.
  bool Play(std::span<const std::byte> image) override;
  /// `Play` returns when its sound has ended, so on this thread there is never one to be ended.
  void Stop() override {}
};

} // namespace kelmio

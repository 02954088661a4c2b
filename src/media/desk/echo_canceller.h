// Takes out of the microphone's sound what came from the loudspeaker.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "media/desk_stream.h"

namespace kelmio {

/// Echo of the room, steady noise and hum go, and the level of the voice is brought to a usual one. The sound is
/// delayed by 13 milliseconds on its way. One thread at a time; allocates only when made.
class EchoCanceller {
public:
  EchoCanceller();
  ~EchoCanceller();
  EchoCanceller(const EchoCanceller&) = delete;
  EchoCanceller& operator=(const EchoCanceller&) = delete;

  /// A frame that goes to the loudspeaker.
  void Played(std::span<const std::int16_t> frame) noexcept;
  /// Cleans a frame of the microphone. `echo_delay_ms` as in `DeskClient::Captured`; a few tens of milliseconds of
  /// error do no harm.
  void Clean(std::span<std::int16_t> frame, int echo_delay_ms) noexcept;

private:
  struct Library;
  std::unique_ptr<Library> library_;
};

} // namespace kelmio

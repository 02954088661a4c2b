// The sound of a call on a modem, which plays or listens but never both.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "drivers/voice_modem/modem_link.h"
#include "drivers/voice_modem/voice_formats.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// Runs from the moment the line is up until the call is over: plays while the sound port speaks, and listens at all
/// other times. While it plays and while it changes from one to the other, the port hears silence, so that a recording
/// keeps true time. All on the modem's thread, and so are its calls of the sound port.
class ModemConversation {
public:
  struct House {
    ModemLink& link;
    const ModemClock& clock;
    VoiceFormat format;
    std::function<bool()> over;                       // does what has been asked for; true when the call is to end
    std::function<std::shared_ptr<SoundPort>()> port; // may be null
  };

  explicit ModemConversation(House house);

  /// Returns once the call is over, the stream stopped. False when the modem doesn't follow any more.
  bool Run();

  /// What came of a recording; the link's sink.
  void TakeSamples(std::string_view bytes);

private:
  using Seconds = ModemClock::Seconds;
  enum class Stop : std::uint8_t { Drain, Drop };

  bool Speaks() const;
  bool Play();
  bool StopPlaying(Stop how);
  bool Listen();
  bool Receive();
  bool StopListening();
  void SendFrame();
  void Hear(const std::vector<std::int16_t>& samples);
  void HearMissing();

  House house_;
  Seconds began_;
  std::size_t heard_ = 0;             // samples since then
  std::string bytes_;                 // of half a sample
  std::vector<std::int16_t> samples_; // not yet a frame
  std::vector<std::int16_t> early_;   // what the port gave when nothing was expected of it
  Seconds last_sound_{0};
  std::size_t sent_ = 0; // bytes of sound, of this playing
  int failures_ = 0;     // streams that ended by themselves, in a row
};

} // namespace kelmio

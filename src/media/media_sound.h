// Makes the sound of calls: one for each call, on its own files and thread.
#pragma once

#include <memory>

#include "media/desk/desk.h"
#include "media/desk_stream.h"
#include "platform/event_loop.h"
#include "telephony/tapi_control/call_sound.h"

namespace kelmio {

/// The one real implementation of `CallSoundFactory`. `loop` outlives the factory, each sound and each port.
///
/// Threads of one sound:
/// - the user interface thread calls the operations of `CallSound` and gets every report, through `loop`;
/// - the driver's sound thread brings and fetches samples at the port, and never touches a file;
/// - a worker of the sound's own reads the played file ahead into a ring and empties the ring of the recorded
///   one. It starts with the first file and ends with the sound. Only opening, and finishing a recording, are
///   done on the user interface thread, because their outcome is wanted there at once.
///
/// What goes on beyond what `CallSound` says: digits and busy tone are reported for as long as the driver
/// brings sound, the rest of the signal watch from `Record` with `watch_signal` until `StopRecord`, also past
/// the length limit. A length limit of 0 or less is none. Why `Play` or `Record` fails is reported as
/// `Trouble`. While the desk is on the call, the user's voice counts for the signal watch as the far side's does.
///
/// Microphone and loudspeaker are open from `UseDesk` to `ReleaseDesk` or the end of the sound, and at no other
/// time: what the machine plays and records it does with the microphone closed.
class MediaSoundFactory : public CallSoundFactory {
public:
  /// `desk` outlives the factory; without one, `UseDesk` does nothing.
  explicit MediaSoundFactory(EventLoop& loop, DeskStream* desk = nullptr) : loop_(loop) {
    if (desk != nullptr)
      desk_ = std::make_shared<Desk>(*desk);
  }
  /// A sound that is left, in a closure that never ran, has no desk any more.
  ~MediaSoundFactory() override {
    if (desk_ != nullptr)
      desk_->Close();
  }
  MediaSoundFactory(const MediaSoundFactory&) = delete;
  MediaSoundFactory& operator=(const MediaSoundFactory&) = delete;

  std::unique_ptr<CallSound> Create(CallSoundEvents& events) override;
  bool CanRecord(const WaveFormatRecord& format) const override;

private:
  EventLoop& loop_;
  std::shared_ptr<Desk> desk_; // shared with the sounds; null where there is none
};

} // namespace kelmio

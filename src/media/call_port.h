// The end of a call's sound that the driver's sound thread talks to.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>

#include "media/desk/desk_handset.h"
#include "media/reporter.h"
#include "media/resampler.h"
#include "media/signal_watch.h"
#include "media/wave_player.h"
#include "media/wave_recorder.h"

namespace kelmio {

/// Plays, records, listens, and speaks with the desk, frame by frame. The sound thread holds one lock for the time of a
/// frame; the user interface thread takes it only to hand over a player or a recorder or to switch the watch, so
/// neither keeps the other waiting for long. No file is touched here. Reports are posted as they happen.
class CallPort : public SoundPort, private SignalSink {
public:
  explicit CallPort(Reporter reporter);

  // Sound thread.
  void Received(std::span<const std::int16_t> samples, int rate) noexcept override;
  void ToSend(std::span<std::int16_t> samples, int rate) noexcept override;
  bool Speaks() const noexcept override;

  // User interface thread. `play` and `watch` are the numbers that reports bear (see `ReportTarget`).
  void SetPlayer(std::shared_ptr<WavePlayer> player, std::uint64_t play);
  void SetRecorder(std::shared_ptr<WaveRecorder> recorder);
  /// Takes the recorder out, with all sound that has come so far; may be finished then.
  void RemoveRecorder();
  /// Whom the far side hears and who hears it; null when nobody at the desk does.
  void SetHandset(std::shared_ptr<DeskHandset> handset);
  void StartWatching(std::uint64_t watch);
  void StopWatching();
  /// The call's sound is gone: from now on the port takes nothing and gives silence.
  void Detach();

private:
  void Listen(std::span<const std::int16_t> samples, int rate);
  void ListenToMissing(std::size_t samples, int rate);
  void Speak(std::span<std::int16_t> samples, int rate);

  void HeardSilence() override;
  void HeardVoice() override;
  void HeardTone(int hertz) override;
  void HeardBusyTone() override;
  void HeardDigit(char digit) override;
  void PostWatched(void (CallSoundEvents::*report)());

  const Reporter reporter_;

  mutable std::mutex mutex_; // guards everything below
  bool detached_ = false;
  std::shared_ptr<WavePlayer> player_;       // null once it has played to its end
  std::shared_ptr<WavePlayer> ended_player_; // kept, so that the sound thread frees nothing
  std::uint64_t play_ = 0;
  std::shared_ptr<WaveRecorder> recorder_;
  std::shared_ptr<DeskHandset> handset_;
  FixedRate to_watch_rate_{SignalWatch::kRate};
  FixedRate near_to_watch_rate_{SignalWatch::kRate};
  SignalWatch watch_;
  std::uint64_t watch_number_ = 0;
  double unheard_seconds_ = 0; // sent since something was last received
};

} // namespace kelmio

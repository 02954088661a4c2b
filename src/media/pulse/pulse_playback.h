// One sound, played to its end.
#pragma once

#include <pulse/sample.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "media/pulse/pulse_connection.h"
#include "media/pulse/pulse_thread.h"

namespace kelmio {

/// What is played. Used by one thread at a time.
class PulseSource {
public:
  virtual ~PulseSource() = default;
  virtual pa_sample_spec Format() const = 0;
  /// Fills the front of `out`, which has room for whole frames, and gives the count of bytes; 0 at the end.
  virtual std::size_t Read(std::span<std::byte> out) = 0;
};

/// How far a playback has come: told by its thread, read by any.
class PulseProgress {
public:
  enum class State {
    Opening,
    Playing,
    Over,    // heard to its end
    Refused, // no server, or no device
    Lost     // while it played
  };

  State Current() const;
  /// Waits while the playback is opening, and gives what has become of it.
  State WaitForBegin(std::chrono::milliseconds limit) const;
  /// Waits until nothing will be heard any more, and gives what has become of it.
  State WaitForEnd(std::chrono::milliseconds limit) const;
  /// What has been heard; it never goes back. It goes on after the end, and stands still once the sound is lost.
  std::chrono::microseconds Heard(PulseClock::time_point now) const;

  /// Until the device is open the sound runs on a clock from `start`, and joins it where the clock is by then.
  void RunOnClock(PulseClock::time_point start);
  std::optional<PulseClock::time_point> ClockStart() const;

  /// `heard` until `now`, of what has been `given` to the device.
  void TellPlaying(PulseClock::time_point now, std::chrono::microseconds heard, std::chrono::microseconds given);
  void TellEnd(State state, PulseClock::time_point now);

private:
  State WaitFor(std::chrono::milliseconds limit, bool (*done)(State)) const;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  State state_ = State::Opening;
  std::optional<PulseClock::time_point> clock_start_;
  PulseClock::time_point looked_;
  std::chrono::microseconds heard_{0};
  std::chrono::microseconds given_{0};
  mutable std::chrono::microseconds told_{0};
};

/// How long a playback waits for others.
struct PulsePatience {
  std::chrono::milliseconds opening; // for server and device, each
  std::chrono::milliseconds silence; // for a device that plays nothing, which has gone even where nobody says so
};

/// Plays through the default device of the moment, and gives it back once all has been heard. The server holds
/// seconds of the sound beforehand, so a disk or a processor that is busy for less isn't heard.
class PulsePlayback : public PulseWork {
public:
  PulsePlayback(
      std::unique_ptr<PulseSource> source, const char* name, std::shared_ptr<PulseProgress> progress,
      PulsePatience patience, std::function<void()> lost = [] {});

  std::optional<std::chrono::microseconds> Turn(pa_mainloop_api& loop, PulseClock::time_point now) override;

private:
  bool OpenStream(PulseClock::time_point now);
  /// False when the sound is over or lost.
  bool Play(PulseClock::time_point now);
  void JoinClock(PulseClock::time_point now);
  bool Feed();
  void TellHeard(PulseClock::time_point now);
  void End(PulseProgress::State state, PulseClock::time_point now);

  const std::unique_ptr<PulseSource> source_;
  const char* const name_;
  const std::shared_ptr<PulseProgress> progress_;
  const PulsePatience patience_;
  const std::function<void()> lost_; // called on this thread
  const pa_sample_spec format_;

  std::optional<PulseConnection> connection_;
  PulseStream stream_; // goes before the connection
  PulseClock::time_point stream_given_up_;
  bool playing_ = false;
  std::vector<std::byte> piece_;
  std::uint64_t passed_ = 0; // bytes that the clock was ahead when the sound joined it
  std::uint64_t given_ = 0;  // bytes, with those
  PulseOperation drain_;     // once all has been given
  std::chrono::microseconds heard_{0};
  PulseClock::time_point progressed_;
};

} // namespace kelmio

// Microphone and loudspeaker, as seen by the thread that serves them.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <utility>

#include "media/desk_stream.h"
#include "media/pulse/pulse_connection.h"
#include "media/pulse/pulse_thread.h"

namespace kelmio {

/// The way to the client, which can be shut while a thread that hangs still holds it.
class PulseDeskDoor {
public:
  explicit PulseDeskDoor(std::shared_ptr<DeskClient> client) : client_(std::move(client)) {}
  template <class Call> void WithClient(Call call) {
    const std::lock_guard lock(mutex_);
    if (client_)
      call(*client_);
  }
  /// Any thread. No call is under way or follows once this returns.
  void Close() {
    const std::lock_guard lock(mutex_);
    client_.reset();
  }

private:
  std::mutex mutex_; // held for the length of a call, which is short
  std::shared_ptr<DeskClient> client_;
};

/// A stream to or from a default device, opened again and again until there is one.
class PulseDeskHalf {
public:
  using Open = std::function<PulseStream(const PulseConnection& connection)>;
  explicit PulseDeskHalf(Open open) : open_(std::move(open)) {}

  enum class State { Unknown, Works, Missing };
  /// Opens what isn't open when it is time to try again.
  State Turn(const PulseConnection& connection, PulseClock::time_point now);
  /// The open stream.
  pa_stream* Stream() const { return state_ == State::Works ? stream_.get() : nullptr; }
  void Drop();

private:
  const Open open_;
  State state_ = State::Unknown;
  PulseStream stream_;
  PulseClock::time_point try_again_;
};

/// Holds microphone and loudspeaker open, through the loss and return of either and of the server.
class PulseDeskWork : public PulseWork {
public:
  /// `trouble` is called on this work's thread.
  PulseDeskWork(std::shared_ptr<PulseDeskDoor> door, std::function<void(const char*)> trouble);

  std::optional<std::chrono::microseconds> Turn(pa_mainloop_api& loop, PulseClock::time_point now) override;

private:
  void Disconnect(PulseClock::time_point now);
  void Tell(const char* words);
  void TellWhatWorks(PulseDeskHalf::State loudspeaker, PulseDeskHalf::State microphone);
  /// True when samples have moved.
  bool Play(pa_stream& stream);
  bool Capture(pa_stream& stream);
  void Take(std::span<const std::int16_t> samples, std::chrono::microseconds age);

  const std::shared_ptr<PulseDeskDoor> door_;
  const std::function<void(const char*)> trouble_;
  const char* told_ = nullptr; // the words that hold at present

  std::optional<PulseConnection> connection_;
  PulseDeskHalf loudspeaker_; // both go before the connection
  PulseDeskHalf microphone_;
  PulseClock::time_point try_again_;
  PulseClock::time_point moved_; // when samples last did, or the connection was made

  std::array<std::int16_t, kDeskFrame> to_play_{};
  std::size_t played_ = kDeskFrame; // of `to_play_`
  std::chrono::microseconds play_delay_{0};
  std::array<std::int16_t, kDeskFrame> captured_{};
  std::size_t held_ = 0; // of `captured_`
};

} // namespace kelmio

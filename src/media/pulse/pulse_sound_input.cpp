#include "media/pulse/pulse_sound_input.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <span>
#include <utility>

#include "media/pulse/pulse_connection.h"
#include "media/pulse/pulse_thread.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;

constexpr pa_sample_spec kFormat{PA_SAMPLE_S16NE, kMicrophoneRate, 1};
/// A server may be started by the first who asks for it.
constexpr std::chrono::seconds kConnectPatience = 5s;
/// The library wakes the thread for everything that happens, so this is only for what it keeps to itself.
constexpr std::chrono::seconds kLook = 1s;
/// The server sends so much at a time: what a stop cuts off is no longer.
constexpr std::uint32_t kStepBytes = kMicrophoneRate / 50 * sizeof(std::int16_t);
constexpr auto kUnset = static_cast<std::uint32_t>(-1); // the server's word for "choose yourself"
/// Held for a user interface that doesn't fetch it.
constexpr std::size_t kMostHeld = std::size_t{60} * kMicrophoneRate;

} // namespace

/// What passes between the thread that listens and the one that fetches. A thread that hangs may outlive the input.
class PulseHeard {
public:
  void Add(std::span<const std::int16_t> samples) {
    const std::lock_guard lock(mutex_);
    if (!shut_)
      samples_.insert(samples_.end(), samples.begin(), samples.begin() + Room(samples.size()));
  }
  /// A hole that the server left: the time goes on.
  void AddSilence(std::size_t count) {
    const std::lock_guard lock(mutex_);
    if (!shut_)
      samples_.insert(samples_.end(), static_cast<std::size_t>(Room(count)), std::int16_t{0});
  }
  void TellLost() {
    const std::lock_guard lock(mutex_);
    lost_ = true;
  }
  bool Lost() const {
    const std::lock_guard lock(mutex_);
    return lost_;
  }
  std::vector<std::int16_t> Take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(samples_, {});
  }
  void Shut() {
    const std::lock_guard lock(mutex_);
    shut_ = true;
  }

private:
  std::ptrdiff_t Room(std::size_t count) const {
    return static_cast<std::ptrdiff_t>(std::min(count, kMostHeld - samples_.size()));
  }

  mutable std::mutex mutex_;
  std::vector<std::int16_t> samples_;
  bool lost_ = false;
  bool shut_ = false;
};

namespace {

class Capture : public PulseWork {
public:
  explicit Capture(std::shared_ptr<PulseHeard> heard) : heard_(std::move(heard)) {}

  std::optional<std::chrono::microseconds> Turn(pa_mainloop_api& loop, PulseClock::time_point now) override {
    if (!connection_)
      connection_.emplace(loop, now, kConnectPatience);
    const PulseState reached = connection_->State(now);
    if (reached == PulseState::Opening)
      return connection_->Left(now);
    if (reached == PulseState::Ready && (stream_ || OpenStream())) {
      const PulseState state = StateOf(*stream_);
      if (state == PulseState::Opening || (state == PulseState::Ready && Listen()))
        return kLook;
    }
    heard_->TellLost();
    return {};
  }

private:
  bool OpenStream() {
    stream_ = connection_->MakeStream("Recording", nullptr, kFormat);
    constexpr pa_buffer_attr kBuffer{kUnset, kUnset, kUnset, kUnset, kStepBytes};
    return stream_ && pa_stream_connect_record(stream_.get(), nullptr, &kBuffer, PA_STREAM_ADJUST_LATENCY) == 0;
  }
  bool Listen() {
    const void* data = nullptr;
    std::size_t size = 0;
    while (pa_stream_peek(stream_.get(), &data, &size) == 0) {
      if (size == 0)
        return true;
      const std::size_t count = size / sizeof(std::int16_t);
      if (data)
        heard_->Add({static_cast<const std::int16_t*>(data), count});
      else
        heard_->AddSilence(count);
      pa_stream_drop(stream_.get());
    }
    return false;
  }

  const std::shared_ptr<PulseHeard> heard_;
  std::optional<PulseConnection> connection_;
  PulseStream stream_; // goes before the connection
};

} // namespace

PulseSoundInput::PulseSoundInput() = default;

PulseSoundInput::~PulseSoundInput() {
  Stop();
}

void PulseSoundInput::Start() {
  Stop();
  heard_ = std::make_shared<PulseHeard>();
  thread_ = std::make_unique<PulseThread>(std::make_unique<Capture>(heard_));
}

void PulseSoundInput::Stop() {
  if (!thread_)
    return;
  thread_.reset();
  heard_->Shut();
}

bool PulseSoundInput::Lost() const {
  return heard_ && heard_->Lost();
}

std::vector<std::int16_t> PulseSoundInput::Take() {
  return heard_ ? heard_->Take() : std::vector<std::int16_t>();
}

} // namespace kelmio

#include "media/pulse/pulse_playback.h"

#include <algorithm>
#include <utility>

namespace kelmio {
namespace {

using namespace std::chrono_literals;

/// What the server holds beforehand. A device may take up to two seconds at once, and silence where there is no more.
constexpr std::chrono::microseconds kAhead = 2500ms;
/// It asks for so much at a time. What two steps leave of the above is halved between server and device, so the
/// device holds little: it can't take back what it holds when the sound is stopped, and its end is known late.
constexpr std::chrono::microseconds kStep = 1220ms;
/// A device that holds much tells the end of a sound late. The end has come as well when the place has stood still for
/// so long, so near to it.
constexpr std::chrono::microseconds kNearEnd = 100ms;
constexpr std::chrono::microseconds kStandstill = 1s;
/// How often the place that is heard is looked up; in between it is reckoned.
constexpr std::chrono::microseconds kLook = 100ms;
constexpr std::size_t kPiece = 16384; // bytes read at a time

/// The server's word for "choose yourself".
constexpr auto kUnset = static_cast<std::uint32_t>(-1);
constexpr auto kNoSize = static_cast<std::size_t>(-1);

std::chrono::microseconds Duration(std::uint64_t bytes, const pa_sample_spec& format) {
  return std::chrono::microseconds(pa_bytes_to_usec(bytes, &format));
}

} // namespace

PulseProgress::State PulseProgress::Current() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

PulseProgress::State PulseProgress::WaitForBegin(std::chrono::milliseconds limit) const {
  return WaitFor(limit, [](State state) { return state != State::Opening; });
}

PulseProgress::State PulseProgress::WaitForEnd(std::chrono::milliseconds limit) const {
  return WaitFor(limit, [](State state) { return state != State::Opening && state != State::Playing; });
}

PulseProgress::State PulseProgress::WaitFor(std::chrono::milliseconds limit, bool (*done)(State)) const {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, limit, [&] { return done(state_); });
  return state_;
}

std::chrono::microseconds PulseProgress::Heard(PulseClock::time_point now) const {
  const std::lock_guard lock(mutex_);
  const auto since = [now](PulseClock::time_point start) {
    return std::chrono::duration_cast<std::chrono::microseconds>(now - start);
  };
  if (state_ == State::Opening || state_ == State::Refused)
    return clock_start_ ? since(*clock_start_) : 0us;
  std::chrono::microseconds reckoned = heard_;
  if (state_ == State::Playing && heard_ > 0us)
    reckoned = std::min(heard_ + std::clamp(since(looked_), 0us, kLook), std::max(heard_, given_));
  else if (state_ == State::Over)
    reckoned += since(looked_);
  told_ = std::max(told_, reckoned);
  return told_;
}

void PulseProgress::RunOnClock(PulseClock::time_point start) {
  const std::lock_guard lock(mutex_);
  clock_start_ = start;
}

std::optional<PulseClock::time_point> PulseProgress::ClockStart() const {
  const std::lock_guard lock(mutex_);
  return clock_start_;
}

void PulseProgress::TellPlaying(PulseClock::time_point now, std::chrono::microseconds heard,
                                std::chrono::microseconds given) {
  const std::lock_guard lock(mutex_);
  state_ = State::Playing;
  looked_ = now;
  heard_ = heard;
  given_ = given;
  changed_.notify_all();
}

void PulseProgress::TellEnd(State state, PulseClock::time_point now) {
  const std::lock_guard lock(mutex_);
  if (state == State::Over)
    heard_ = std::max(heard_, given_);
  state_ = state;
  looked_ = now;
  changed_.notify_all();
}

PulsePlayback::PulsePlayback(std::unique_ptr<PulseSource> source, const char* name,
                             std::shared_ptr<PulseProgress> progress, PulsePatience patience,
                             std::function<void()> lost)
    : source_(std::move(source)), name_(name), progress_(std::move(progress)), patience_(patience),
      lost_(std::move(lost)), format_(source_->Format()) {}

std::optional<std::chrono::microseconds> PulsePlayback::Turn(pa_mainloop_api& loop, PulseClock::time_point now) {
  if (!connection_)
    connection_.emplace(loop, now, patience_.opening);
  const PulseState reached = connection_->State(now);
  if (reached == PulseState::Opening)
    return connection_->Left(now);
  if (reached == PulseState::Ready && (stream_ || OpenStream(now))) {
    const PulseState state = StateOf(*stream_);
    if (state == PulseState::Opening && now < stream_given_up_)
      return std::chrono::ceil<std::chrono::microseconds>(stream_given_up_ - now);
    if (state == PulseState::Ready)
      return Play(now) ? std::optional(kLook) : std::nullopt;
  }
  End(playing_ ? PulseProgress::State::Lost : PulseProgress::State::Refused, now);
  return {};
}

bool PulsePlayback::OpenStream(PulseClock::time_point now) {
  stream_ = connection_->MakeStream(name_, nullptr, format_);
  stream_given_up_ = now + patience_.opening;
  const auto bytes = [this](std::chrono::microseconds time) {
    return static_cast<std::uint32_t>(pa_usec_to_bytes(static_cast<pa_usec_t>(time.count()), &format_));
  };
  const pa_buffer_attr buffer{kUnset, bytes(kAhead), kUnset, bytes(kStep), kUnset};
  constexpr auto kFlags = static_cast<pa_stream_flags_t>(PA_STREAM_INTERPOLATE_TIMING | PA_STREAM_AUTO_TIMING_UPDATE |
                                                         PA_STREAM_ADJUST_LATENCY);
  return stream_ && pa_stream_connect_playback(stream_.get(), nullptr, &buffer, kFlags, nullptr, nullptr) == 0;
}

bool PulsePlayback::Play(PulseClock::time_point now) {
  using State = PulseProgress::State;
  if (!std::exchange(playing_, true)) {
    JoinClock(now);
    progressed_ = now;
  }
  if (!Feed()) {
    End(State::Lost, now);
    return false;
  }
  TellHeard(now);
  if (drain_ && (pa_operation_get_state(drain_.get()) == PA_OPERATION_DONE ||
                 (heard_ + kNearEnd >= Duration(given_, format_) && now - progressed_ >= kStandstill))) {
    End(State::Over, now);
    return false;
  }
  if (now - progressed_ < patience_.silence)
    return true;
  End(State::Lost, now);
  return false;
}

void PulsePlayback::JoinClock(PulseClock::time_point now) {
  const auto start = progress_->ClockStart();
  if (!start)
    return;
  const auto ahead = std::chrono::duration_cast<std::chrono::microseconds>(now - *start);
  const std::uint64_t goal = pa_usec_to_bytes(static_cast<pa_usec_t>(ahead.count()), &format_);
  while (passed_ < goal) {
    piece_.resize(std::min<std::uint64_t>(kPiece, goal - passed_));
    const std::size_t count = source_->Read(piece_);
    if (count == 0)
      break;
    passed_ += count;
  }
  given_ = passed_;
}

bool PulsePlayback::Feed() {
  const std::size_t frame = pa_frame_size(&format_);
  while (!drain_) {
    const std::size_t room = pa_stream_writable_size(stream_.get());
    if (room == kNoSize)
      return false;
    if (room < frame)
      return true;
    piece_.resize(std::min(room, kPiece) / frame * frame);
    const std::size_t count = source_->Read(piece_);
    if (count == 0) {
      drain_.reset(pa_stream_drain(stream_.get(), nullptr, nullptr));
      return drain_ != nullptr;
    }
    if (pa_stream_write(stream_.get(), piece_.data(), count, nullptr, 0, PA_SEEK_RELATIVE) != 0)
      return false;
    given_ += count;
  }
  return true;
}

void PulsePlayback::TellHeard(PulseClock::time_point now) {
  pa_usec_t played = 0; // stays so until the server has told
  pa_stream_get_time(stream_.get(), &played);
  const auto given = Duration(given_, format_);
  const auto heard = std::min(Duration(passed_, format_) + std::chrono::microseconds(played), given);
  if (heard > heard_) {
    heard_ = heard;
    progressed_ = now;
  }
  progress_->TellPlaying(now, heard_, given);
}

void PulsePlayback::End(PulseProgress::State state, PulseClock::time_point now) {
  progress_->TellEnd(state, now);
  if (state == PulseProgress::State::Lost)
    lost_();
}

} // namespace kelmio

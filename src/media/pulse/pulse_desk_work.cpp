#include "media/pulse/pulse_desk_work.h"

#include <algorithm>

namespace kelmio {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;
using State = PulseDeskHalf::State;

constexpr pa_sample_spec kFormat{PA_SAMPLE_S16NE, kDeskRate, 1};
constexpr auto kUnset = static_cast<std::uint32_t>(-1); // the server's word for "choose yourself"
constexpr auto kNoSize = static_cast<std::size_t>(-1);

constexpr std::uint32_t kBytesPerSecond = kDeskRate * sizeof(std::int16_t);

constexpr std::uint32_t Bytes(std::chrono::milliseconds time) {
  return static_cast<std::uint32_t>(time.count()) * (kBytesPerSecond / 1000);
}

/// From a write to the ear, as far as the device can do it. Less makes the sound stutter on a busy machine.
constexpr std::chrono::milliseconds kPlayAhead = 40ms;
/// The server asks for so much at a time, half a frame: what it holds then swings less.
constexpr std::chrono::milliseconds kPlayStep = 10ms;
constexpr std::chrono::milliseconds kCaptureStep = 10ms;
/// After a stall no more than this is heard late from the microphone.
constexpr std::chrono::milliseconds kCaptureLimit = 200ms;

constexpr std::chrono::seconds kConnectPatience = 3s;
constexpr std::chrono::seconds kTryAgain = 1s;
/// A server that moves no samples for so long has gone, though its connection stands.
constexpr std::chrono::seconds kStallLimit = 5s;

constexpr char kNoServer[] = "The sound server can't be reached: nothing can be heard or said.";
constexpr char kNoDevice[] = "There is no sound device: nothing can be heard or said.";
constexpr char kNoMicrophone[] = "There is no microphone: the other side hears nothing.";
constexpr char kNoLoudspeaker[] = "There is no loudspeaker: nothing can be heard.";
constexpr char kAllWell[] = "Microphone and loudspeaker are back.";

constexpr auto kFlags = static_cast<pa_stream_flags_t>(PA_STREAM_AUTO_TIMING_UPDATE | PA_STREAM_ADJUST_LATENCY);
constexpr char kRole[] = "phone";

PulseStream OpenLoudspeaker(const PulseConnection& connection) {
  PulseStream stream = connection.MakeStream("Call", kRole, kFormat);
  // A step in hand is enough to go on after the server ran dry.
  constexpr pa_buffer_attr kBuffer{kUnset, Bytes(kPlayAhead), Bytes(kPlayStep), Bytes(kPlayStep), kUnset};
  if (stream && pa_stream_connect_playback(stream.get(), nullptr, &kBuffer, kFlags, nullptr, nullptr) != 0)
    stream.reset();
  return stream;
}

PulseStream OpenMicrophone(const PulseConnection& connection) {
  PulseStream stream = connection.MakeStream("Call", kRole, kFormat);
  constexpr pa_buffer_attr kBuffer{Bytes(kCaptureLimit), kUnset, kUnset, kUnset, Bytes(kCaptureStep)};
  if (stream && pa_stream_connect_record(stream.get(), nullptr, &kBuffer, kFlags) != 0)
    stream.reset();
  return stream;
}

microseconds Time(std::size_t samples) {
  return microseconds(samples * std::micro::den / kDeskRate);
}

/// What is between the near end of a stream and the air, by the server's last word, a second or so old, and the time
/// since. The library's own reckoning smooths that, and is wrong by hundreds of milliseconds in the first seconds of a
/// call on a busy machine. `last` where the server hasn't told yet.
microseconds Latency(pa_stream& stream, bool plays, microseconds last) {
  const pa_timing_info* const told = pa_stream_get_timing_info(&stream);
  if (!told)
    return last;
  const auto held = microseconds((told->write_index - told->read_index) * std::micro::den / kBytesPerSecond);
  const auto sink = microseconds(told->sink_usec);
  const microseconds since = std::chrono::duration_cast<microseconds>(
      std::chrono::system_clock::now().time_since_epoch() - std::chrono::seconds(told->timestamp.tv_sec) -
      microseconds(told->timestamp.tv_usec));
  if (plays)
    return std::max(held + sink - (told->playing ? since : 0us), 0us);
  // A device that listens to a loudspeaker hears what that one has yet to play.
  return held + microseconds(told->source_usec) - sink + since;
}

} // namespace

State PulseDeskHalf::Turn(const PulseConnection& connection, PulseClock::time_point now) {
  if (!stream_ && now >= try_again_) {
    stream_ = open_(connection);
    try_again_ = now + kTryAgain;
  }
  const PulseState reached = stream_ ? StateOf(*stream_) : PulseState::Gone;
  if (reached == PulseState::Ready) {
    state_ = State::Works;
  } else if (reached == PulseState::Gone) {
    stream_.reset();
    state_ = State::Missing;
  }
  return state_;
}

void PulseDeskHalf::Drop() {
  stream_.reset();
  state_ = State::Unknown;
  try_again_ = {};
}

PulseDeskWork::PulseDeskWork(std::shared_ptr<PulseDeskDoor> door, std::function<void(const char*)> trouble)
    : door_(std::move(door)), trouble_(std::move(trouble)), loudspeaker_(OpenLoudspeaker), microphone_(OpenMicrophone) {
}

std::optional<microseconds> PulseDeskWork::Turn(pa_mainloop_api& loop, PulseClock::time_point now) {
  if (!connection_) {
    if (now < try_again_)
      return std::chrono::ceil<microseconds>(try_again_ - now);
    connection_.emplace(loop, now, kConnectPatience);
    moved_ = now;
  }
  const PulseState reached = connection_->State(now);
  if (reached == PulseState::Opening) {
    moved_ = now;
    return connection_->Left(now);
  }
  if (reached == PulseState::Gone || now - moved_ > kStallLimit) {
    Disconnect(now);
    Tell(kNoServer);
    return kTryAgain;
  }
  const State loudspeaker = loudspeaker_.Turn(*connection_, now);
  const State microphone = microphone_.Turn(*connection_, now);
  TellWhatWorks(loudspeaker, microphone);
  bool moved = loudspeaker == State::Missing && microphone == State::Missing;
  if (pa_stream* const stream = microphone_.Stream())
    moved |= Capture(*stream);
  if (pa_stream* const stream = loudspeaker_.Stream())
    moved |= Play(*stream);
  if (moved)
    moved_ = now;
  return kTryAgain;
}

void PulseDeskWork::Disconnect(PulseClock::time_point now) {
  loudspeaker_.Drop();
  microphone_.Drop();
  connection_.reset();
  try_again_ = now + kTryAgain;
  played_ = kDeskFrame;
  held_ = 0;
}

void PulseDeskWork::Tell(const char* words) {
  if (words != told_)
    trouble_(words);
  told_ = words;
}

void PulseDeskWork::TellWhatWorks(State loudspeaker, State microphone) {
  if (loudspeaker == State::Unknown || microphone == State::Unknown)
    return;
  if (loudspeaker == State::Missing)
    Tell(microphone == State::Missing ? kNoDevice : kNoLoudspeaker);
  else if (microphone == State::Missing)
    Tell(kNoMicrophone);
  else if (told_)
    Tell(kAllWell);
}

bool PulseDeskWork::Play(pa_stream& stream) {
  const std::size_t writable = pa_stream_writable_size(&stream);
  std::size_t room = writable == kNoSize ? 0 : writable / sizeof(std::int16_t);
  const bool moves = room > 0;
  while (room > 0) {
    if (played_ == kDeskFrame) {
      play_delay_ = Latency(stream, true, play_delay_);
      to_play_.fill(0);
      door_->WithClient([this](DeskClient& client) { client.ToPlay(to_play_); });
      played_ = 0;
    }
    const auto part =
        std::span<const std::int16_t>(to_play_).subspan(played_).first(std::min(room, kDeskFrame - played_));
    if (pa_stream_write(&stream, part.data(), part.size_bytes(), nullptr, 0, PA_SEEK_RELATIVE) != 0)
      return false;
    played_ += part.size();
    room -= part.size();
  }
  return moves;
}

bool PulseDeskWork::Capture(pa_stream& stream) {
  bool moved = false;
  const void* data = nullptr;
  std::size_t size = 0;
  while (pa_stream_peek(&stream, &data, &size) == 0 && size > 0) {
    moved = true;
    const microseconds age = Latency(stream, false, Time(size / sizeof(std::int16_t)));
    // A hole is what the server has lost.
    static constexpr std::array<std::int16_t, kDeskFrame> kHole{};
    if (data)
      Take({static_cast<const std::int16_t*>(data), size / sizeof(std::int16_t)}, age);
    else
      Take(std::span(kHole).first(std::min(kHole.size(), size / sizeof(std::int16_t))), age);
    pa_stream_drop(&stream);
  }
  return moved;
}

void PulseDeskWork::Take(std::span<const std::int16_t> samples, microseconds age) {
  while (!samples.empty()) {
    const auto part = samples.first(std::min(samples.size(), kDeskFrame - held_));
    std::ranges::copy(part, captured_.begin() + static_cast<std::ptrdiff_t>(held_));
    // `age` is that of the first sample of this part; what is held is older.
    const microseconds delay = play_delay_ + age + Time(held_);
    held_ += part.size();
    samples = samples.subspan(part.size());
    age -= Time(part.size());
    if (held_ < kDeskFrame)
      return;
    held_ = 0;
    const auto delay_ms = static_cast<int>(std::chrono::round<std::chrono::milliseconds>(std::max(delay, 0us)).count());
    door_->WithClient([&](DeskClient& client) { client.Captured(captured_, delay_ms); });
  }
}

} // namespace kelmio

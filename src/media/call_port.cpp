#include "media/call_port.h"

#include <algorithm>
#include <array>

namespace kelmio {
namespace {

// A far side that sends nothing for longer is silent, and no longer just late.
constexpr double kLateSeconds = 0.2;

} // namespace

CallPort::CallPort(Reporter reporter) : reporter_(std::move(reporter)), watch_(*this) {}

void CallPort::Received(std::span<const std::int16_t> samples, int rate) noexcept {
  const std::lock_guard lock(mutex_);
  if (detached_ || rate <= 0)
    return;
  unheard_seconds_ = 0;
  Listen(samples, rate);
  if (recorder_)
    recorder_->Put(Direction::Far, samples, rate);
  if (handset_)
    handset_->Hear(samples, rate);
}

void CallPort::ToSend(std::span<std::int16_t> samples, int rate) noexcept {
  const std::lock_guard lock(mutex_);
  if (detached_ || rate <= 0 || !player_)
    std::fill(samples.begin(), samples.end(), std::int16_t{0});
  if (detached_ || rate <= 0)
    return;
  if (player_) {
    player_->Give(samples, rate);
    if (player_->Ended()) {
      ended_player_ = std::move(player_);
      reporter_.Post([play = play_](ReportTarget& target) {
        if (target.play == play)
          target.events.PlayDone();
      });
    }
  }
  if (handset_)
    Speak(samples, rate);
  if (recorder_)
    recorder_->Put(Direction::Near, samples, rate);
  ListenToMissing(samples.size(), rate);
}

bool CallPort::Speaks() const noexcept {
  const std::lock_guard lock(mutex_);
  return player_ || handset_;
}

void CallPort::Listen(std::span<const std::int16_t> samples, int rate) {
  to_watch_rate_.Put(samples, rate, [this](std::span<const std::int16_t> converted) { watch_.Process(converted); });
}

void CallPort::ListenToMissing(std::size_t samples, int rate) {
  const double seconds = static_cast<double>(samples) / rate;
  unheard_seconds_ += seconds;
  if (unheard_seconds_ <= kLateSeconds)
    return;
  constexpr std::array<std::int16_t, 80> kSilence{};
  auto missing = static_cast<std::size_t>(seconds * SignalWatch::kRate);
  while (missing != 0) {
    const std::size_t count = std::min(missing, kSilence.size());
    watch_.Process(std::span(kSilence).first(count));
    missing -= count;
  }
}

void CallPort::Speak(std::span<std::int16_t> samples, int rate) {
  handset_->AddSaid(samples, rate);
  near_to_watch_rate_.Put(samples, rate,
                          [this](std::span<const std::int16_t> converted) { watch_.ProcessNear(converted); });
}

void CallPort::SetPlayer(std::shared_ptr<WavePlayer> player, std::uint64_t play) {
  // The old ones go when this returns, outside the lock.
  std::shared_ptr<WavePlayer> ended;
  const std::lock_guard lock(mutex_);
  player_.swap(player);
  ended_player_.swap(ended);
  play_ = play;
}

void CallPort::SetRecorder(std::shared_ptr<WaveRecorder> recorder) {
  const std::lock_guard lock(mutex_);
  recorder_.swap(recorder);
}

void CallPort::RemoveRecorder() {
  std::shared_ptr<WaveRecorder> recorder;
  const std::lock_guard lock(mutex_);
  recorder_.swap(recorder);
  if (recorder)
    recorder->EndInput();
}

void CallPort::SetHandset(std::shared_ptr<DeskHandset> handset) {
  const std::lock_guard lock(mutex_);
  handset_.swap(handset);
  watch_.ForgetNear();
}

void CallPort::StartWatching(std::uint64_t watch) {
  const std::lock_guard lock(mutex_);
  watch_number_ = watch;
  watch_.StartWatching();
}

void CallPort::StopWatching() {
  const std::lock_guard lock(mutex_);
  watch_.StopWatching();
}

void CallPort::Detach() {
  RemoveRecorder();
  SetPlayer(nullptr, 0);
  SetHandset(nullptr);
  const std::lock_guard lock(mutex_);
  detached_ = true;
}

void CallPort::PostWatched(void (CallSoundEvents::*report)()) {
  reporter_.Post([report, watch = watch_number_](ReportTarget& target) {
    if (target.watch == watch)
      (target.events.*report)();
  });
}

void CallPort::HeardSilence() {
  PostWatched(&CallSoundEvents::Silence);
}

void CallPort::HeardVoice() {
  PostWatched(&CallSoundEvents::Voice);
}

void CallPort::HeardTone(int hertz) {
  reporter_.Post([hertz, watch = watch_number_](ReportTarget& target) {
    if (target.watch == watch)
      target.events.Tone(hertz);
  });
}

void CallPort::HeardBusyTone() {
  reporter_.Post([](ReportTarget& target) { target.events.BusyTone(); });
}

void CallPort::HeardDigit(char digit) {
  reporter_.Post([digit](ReportTarget& target) { target.events.Digit(digit); });
}

} // namespace kelmio

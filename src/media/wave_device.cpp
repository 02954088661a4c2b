#include "media/wave_device.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>
#include <vector>

#include "media/wave_file.h"

namespace kelmio {
namespace {

constexpr std::int64_t kMillisecondsPerSecond = 1000;

/// Long for any greeting; it keeps a forgotten recording from filling the disk.
constexpr std::size_t kRecordLimit = std::size_t{1000} * kMicrophoneRate;
/// How often the microphone is listened to, and its level told.
constexpr std::chrono::milliseconds kListenInterval{100};
/// A microphone that has given no sample for 10 seconds isn't there, though nobody says so. A wireless one takes some
/// seconds to begin.
constexpr int kSilentTurns = 100;
/// The level that shows as 0, below the loudest; speech near a microphone peaks between -30 and -6 dB.
constexpr double kLevelRange = 60;
constexpr double kFullScale = 32768;

constexpr char kNoMicrophone[] = "There is no microphone: nothing can be recorded.";
constexpr char kMicrophoneGone[] = "The microphone has gone: what it heard until then is kept.";
constexpr char kLimitReached[] = "The recording ends here: it has reached its longest time.";

/// 0 to 100.
int LevelOf(std::span<const std::int16_t> samples) {
  int peak = 0;
  for (const std::int16_t sample : samples)
    peak = std::max(peak, std::abs(int{sample}));
  if (peak == 0)
    return 0;
  const double decibels = 20 * std::log10(peak / kFullScale);
  return static_cast<int>(std::lround(100 * std::max(0.0, 1 + decibels / kLevelRange)));
}

bool IsWord(std::string_view text, std::string_view lower_case_word) {
  return std::equal(text.begin(), text.end(), lower_case_word.begin(), lower_case_word.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b; });
}

} // namespace

WaveDevice::WaveDevice(TimerService& timers, SoundOutput& output, SoundInput* input)
    : timers_(timers), output_(output), input_(input) {
  output_.Lost = [this] { OutputLost(); };
}

WaveDevice::~WaveDevice() {
  RecordLevel = [](int) {};
  Trouble = [](const std::string&) {};
  Close();
  output_.Lost = [] {};
}

void WaveDevice::SetUpdateInterval(int interval) {
  if (interval == interval_ms_)
    return;
  interval_ms_ = interval;
  RunStatusTimer();
}

void WaveDevice::Command(std::string_view word) {
  if (IsWord(word, "open"))
    Open();
  else if (IsWord(word, "play"))
    Play();
  else if (IsWord(word, "stop"))
    Stop();
  else if (IsWord(word, "record"))
    Record();
  else if (IsWord(word, "save"))
    Save();
  else if (IsWord(word, "close"))
    Close();
  else if (IsWord(word, "record"))
    Trouble("Nothing can be recorded from the microphone yet: choose a wave file instead.");
}

long WaveDevice::Position() const {
  return playing_ ? std::min(position_ + output_.Heard(), length_) : position_;
}

void WaveDevice::Open() {
  Close();
  path_ = file_name_;
  const std::optional<long> length = WaveLength(path_);
  open_ = length.has_value();
  unreadable_ = !open_;
  length_ = length.value_or(0);
  silence_told_ = false;
  RunStatusTimer();
}

void WaveDevice::Play() {
  TellUnreadable();
  if (!open_)
    return;
  Stop();
  position_ = std::clamp(std::exchange(from_, {}).value_or(position_), 0L, length_);
  if (position_ == length_)
    return;
  std::string error;
  std::unique_ptr<WaveReader> sound = WaveReader::Open(path_, error);
  if (!sound) {
    Trouble("Could not play \"" + path_ + "\": " + error + ".");
    return;
  }
  sound->Skip(std::int64_t{position_} * sound->Rate() / kMillisecondsPerSecond);
  playing_ = true;
  if (output_.Start(std::move(sound)) || silence_told_)
    return;
  silence_told_ = true;
  Trouble("There is no sound device: nothing can be heard.");
}

void WaveDevice::Stop() {
  recording_ = false;
  EndListening();
  if (!playing_)
    return;
  position_ = Position();
  playing_ = false;
  output_.Stop();
}

void WaveDevice::Close() {
  take_.reset();
  Stop();
  TellUnreadable();
  open_ = false;
  path_.clear();
  length_ = 0;
  position_ = 0;
  RunStatusTimer();
}

void WaveDevice::OutputLost() {
  if (!playing_)
    return;
  Stop();
  Trouble("The sound device has gone: the sound was stopped.");
}

void WaveDevice::Record() {
  if (path_.empty() || recording_)
    return;
  Stop();
  unreadable_ = false;
  take_.reset();
  if (!input_) {
    Trouble(kNoMicrophone);
    return;
  }
  std::string error;
  take_ = WaveTake::Start(path_, kMicrophoneRate, error);
  if (!take_) {
    Trouble("Could not record \"" + path_ + "\": " + error + ".");
    return;
  }
  recording_ = true;
  silent_turns_ = 0;
  input_->Start();
  listen_timer_ = timers_.Start(kListenInterval, [this] { Listen(); });
}

void WaveDevice::Listen() {
  const std::vector<std::int16_t> heard = input_->Take();
  silent_turns_ = heard.empty() ? silent_turns_ + 1 : 0;
  if (!Keep(heard))
    return;
  const bool gone = input_->Lost() || silent_turns_ >= kSilentTurns;
  if (!gone && take_->Count() < kRecordLimit) {
    if (!heard.empty())
      RecordLevel(LevelOf(heard));
    return;
  }
  if (!EndListening())
    return;
  if (take_->Count() == 0) {
    recording_ = false;
    take_.reset();
    Trouble(kNoMicrophone);
  } else {
    Trouble(gone ? kMicrophoneGone : kLimitReached);
  }
}

/// False when the disk has refused: the recording is given up by then.
bool WaveDevice::Keep(std::span<const std::int16_t> samples) {
  if (take_->Write(samples.first(std::min(samples.size(), kRecordLimit - take_->Count()))))
    return true;
  const std::string error = take_->Error();
  recording_ = false;
  take_.reset();
  EndListening();
  Trouble("Could not record \"" + path_ + "\": " + error + ".");
  return false;
}

/// Takes what was heard until now. False when there is no recording any more.
bool WaveDevice::EndListening() {
  if (listen_timer_ != TimerService::kNoTimer) {
    timers_.Stop(std::exchange(listen_timer_, TimerService::kNoTimer));
    input_->Stop();
    if (take_)
      Keep(input_->Take());
    RecordLevel(0);
  }
  return take_ != nullptr;
}

void WaveDevice::Save() {
  if (!take_)
    return;
  Stop();
  const std::unique_ptr<WaveTake> take = std::move(take_);
  if (!take)
    return; // the disk refused the last of it
  if (take->Count() == 0) {
    Trouble("Nothing was recorded: \"" + path_ + "\" stays as it was.");
    return;
  }
  if (!take->Save()) {
    Trouble("Could not save \"" + path_ + "\": " + take->Error() + ".");
    return;
  }
  length_ = WaveLength(path_).value_or(0);
  position_ = 0;
  open_ = true;
  RunStatusTimer();
}

void WaveDevice::TellUnreadable() {
  if (std::exchange(unreadable_, false))
    Trouble("Could not open \"" + path_ + "\" as a wave file.");
}

void WaveDevice::RunStatusTimer() {
  if (status_timer_ != TimerService::kNoTimer)
    timers_.Stop(std::exchange(status_timer_, TimerService::kNoTimer));
  if (open_ && interval_ms_ > 0)
    status_timer_ = timers_.Start(std::chrono::milliseconds(interval_ms_), [this] { StatusUpdate(); });
}

MultimediaMode WaveDevice::Mode() const {
  if (recording_)
    return MultimediaMode::Recording;
  if (playing_ && Position() < length_)
    return MultimediaMode::Playing;
  return open_ || take_ ? MultimediaMode::Stopped : MultimediaMode::NotReady;
}

} // namespace kelmio

#include "media/wave_device.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "media/wave_file.h"

namespace kelmio {
namespace {

constexpr std::int64_t kMillisecondsPerSecond = 1000;

bool IsWord(std::string_view text, std::string_view lower_case_word) {
  return std::equal(text.begin(), text.end(), lower_case_word.begin(), lower_case_word.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b; });
}

} // namespace

WaveDevice::WaveDevice(TimerService& timers, SoundOutput& output) : timers_(timers), output_(output) {
  output_.Lost = [this] { OutputLost(); };
}

WaveDevice::~WaveDevice() {
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
  const std::optional<long> length = WaveLength(file_name_);
  if (!length) {
    Trouble("Could not open \"" + file_name_ + "\" as a wave file.");
    return;
  }
  open_ = true;
  path_ = file_name_;
  length_ = *length;
  silence_told_ = false;
  RunStatusTimer();
}

void WaveDevice::Play() {
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
  if (!playing_)
    return;
  position_ = Position();
  playing_ = false;
  output_.Stop();
}

void WaveDevice::Close() {
  Stop();
  open_ = false;
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

void WaveDevice::RunStatusTimer() {
  if (status_timer_ != TimerService::kNoTimer)
    timers_.Stop(std::exchange(status_timer_, TimerService::kNoTimer));
  if (open_ && interval_ms_ > 0)
    status_timer_ = timers_.Start(std::chrono::milliseconds(interval_ms_), [this] { StatusUpdate(); });
}

MultimediaMode WaveDevice::Mode() const {
  if (!open_)
    return MultimediaMode::NotReady;
  return playing_ && Position() < length_ ? MultimediaMode::Playing : MultimediaMode::Stopped;
}

} // namespace kelmio

#include "settings_ui/greeting_recorder.h"

#include <algorithm>
#include <utility>

#include "core/mGeneral.h"
#include "core/text.h"

namespace kelmio {

namespace {

constexpr int kWatchMs = 50;
constexpr const char* kGreetingName = "/Greeting.wav";

} // namespace

GreetingRecorder::GreetingRecorder(AppState& app, MultimediaDevice& mmc, TimerService& timers, const Controls& controls,
                                   TroubleSink trouble)
    : app_(app), mmc_(mmc), controls_(controls), tmrPlaying_(timers, kWatchMs) {
  controls_.cmdRecordSound.Click = [this] { Record(); };
  controls_.cmdPlaySound.Click = [this] { Play(); };
  controls_.cmdStopSound.Click = [this] { Stop(); };
  tmrPlaying_.Tick = [this] { WatchPlaying(); };
  mmc_.RecordLevel = [this](int percent) { controls_.pbLevel.Value = std::clamp(percent, 0, 100); };
  mmc_.Trouble = std::move(trouble);
}

GreetingRecorder::~GreetingRecorder() {
  Finish();
  mmc_.RecordLevel = [](int) {};
  mmc_.Trouble = [](const std::string&) {};
}

void GreetingRecorder::Record() {
  // The button is there while a sound plays too; the device does one thing at a time.
  if (tmrPlaying_.Enabled())
    EndPlaying();
  const std::string path = app_.SoundFolder + kGreetingName;
  controls_.txtGreetingFile.Text = path;
  controls_.cmdStopSound.Enabled = true;
  controls_.cmdRecordSound.Enabled = false;
  controls_.cmdPlaySound.Enabled = false;
  Open(path);
  mmc_.Command("Record");
}

void GreetingRecorder::Play() {
  const std::string path(Trimmed(controls_.txtGreetingFile.Text.Get()));
  if (!mGeneral::FileExists(path))
    return;
  controls_.cmdRecordSound.Enabled = true;
  controls_.cmdStopSound.Enabled = true;
  controls_.cmdPlaySound.Enabled = false;
  app_.StopPlaybackFlag = false;
  Open(path);
  mmc_.Command("Play");
  tmrPlaying_.SetEnabled(true);
  WatchPlaying();
}

void GreetingRecorder::Stop() {
  app_.StopPlaybackFlag = true;
  if (tmrPlaying_.Enabled())
    EndPlaying();
  else
    Finish();
  controls_.cmdRecordSound.Enabled = true;
  controls_.cmdPlaySound.Enabled = true;
}

void GreetingRecorder::Finish() {
  tmrPlaying_.SetEnabled(false);
  const MultimediaMode mode = mmc_.Mode();
  if (mode == MultimediaMode::Playing)
    mmc_.Command("Stop");
  if (mode == MultimediaMode::Recording)
    mmc_.Command("Save");
  if (mode == MultimediaMode::Playing || mode == MultimediaMode::Recording)
    mmc_.Command("Close");
  controls_.pbLevel.Value = 0;
}

void GreetingRecorder::Open(const std::string& path) {
  mmc_.SetDeviceType("WaveAudio");
  mmc_.SetFileName(path);
  mmc_.Command("Open");
}

void GreetingRecorder::WatchPlaying() {
  if (mmc_.Mode() != MultimediaMode::Playing || app_.StopPlaybackFlag)
    EndPlaying();
}

void GreetingRecorder::EndPlaying() {
  tmrPlaying_.SetEnabled(false);
  mmc_.Command("Stop");
  mmc_.Command("Close");
  controls_.cmdStopSound.Enabled = true;
  controls_.cmdPlaySound.Enabled = true;
}

} // namespace kelmio

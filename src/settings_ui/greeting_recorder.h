// The greeting at the desk: record it, listen to it, stop.
#pragma once

#include <string>

#include "controls/basic_controls.h"
#include "controls/timer.h"
#include "core/app_state.h"
#include "core/trouble.h"
#include "platform/event_loop.h"
#include "platform/multimedia_device.h"

namespace kelmio {

/// Drives a multimedia device that is nobody else's. User interface thread only; all that is handed over outlives it.
class GreetingRecorder {
public:
  struct Controls {
    TextBox& txtGreetingFile;
    Button& cmdRecordSound;
    Button& cmdPlaySound;
    Button& cmdStopSound;
    ProgressBar& pbLevel; // 0 to 100: how loud the microphone is
  };
  GreetingRecorder(AppState& app, MultimediaDevice& mmc, TimerService& timers, const Controls& controls,
                   TroubleSink trouble);
  GreetingRecorder(const GreetingRecorder&) = delete;
  GreetingRecorder& operator=(const GreetingRecorder&) = delete;
  /// Ends as `Finish` does.
  ~GreetingRecorder();

  /// Records what the microphone hears into the greeting file of the sound folder, whose path goes to the text box.
  void Record();
  /// Plays the file of the text box and returns at once; nothing happens without such a file.
  void Play();
  void Stop();
  /// Ends what plays and saves what is recorded. The buttons stay as they are.
  void Finish();

private:
  void Open(const std::string& path);
  void WatchPlaying();
  void EndPlaying();

  AppState& app_;
  MultimediaDevice& mmc_;
  Controls controls_;
  Timer tmrPlaying_;
};

} // namespace kelmio

// The sound output on the desktop's sound server.
#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <memory>

#include "media/sound_output.h"

class QAudioSink;

namespace kelmio {

/// Through the default device of the moment. The device is opened by a start and given back soon after the end of
/// the sound. A sound that can't be given to the device runs on a clock instead, and so does the end of each sound,
/// which the device holds already. The toolkit looks for the sound server at the first start and no more when there
/// is none: one that comes later is heard by the next run of the program. User interface thread only, with its event
/// loop running.
class QtSoundOutput : public SoundOutput {
public:
  QtSoundOutput();
  ~QtSoundOutput() override;

  bool Start(std::unique_ptr<WaveReader> sound) override;
  void Stop() override;
  long Heard() const override;

private:
  class Source;

  /// The rest of the sound runs on the clock.
  void RunOnClock();
  void Watch();
  void TellLost();

  std::unique_ptr<Source> source_; // outlives the sink, which reads it
  std::unique_ptr<QAudioSink> sink_;
  long clock_start_ms_ = 0; // heard when the clock took over
  QElapsedTimer clock_;     // valid from then on
  QTimer watch_;
  mutable long heard_ms_ = 0; // of the device, which forgets it when it is lost
  long watched_ms_ = 0;
  QElapsedTimer since_progress_;
};

} // namespace kelmio

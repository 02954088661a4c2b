// The multimedia device on a sound output.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "media/sound_output.h"
#include "platform/event_loop.h"
#include "platform/multimedia_device.h"

namespace kelmio {

/// Opens any wave file that can be read. Opening reads the header and no more, so that a length costs little.
/// Without a sound device a file plays unheard: its position moves, and `Trouble` tells once for each opening.
/// It doesn't record yet, and says so.
/// A play for which no start was set goes on from the present position. Timers and output outlive the device,
/// which is the output's only user.
class WaveDevice : public MultimediaDevice {
public:
  WaveDevice(TimerService& timers, SoundOutput& output);
  WaveDevice(const WaveDevice&) = delete;
  WaveDevice& operator=(const WaveDevice&) = delete;
  ~WaveDevice() override;

  void SetDeviceType(const std::string& /*type*/) override {}
  void SetFileName(const std::string& path) override { file_name_ = path; }
  void SetFrom(long position) override { from_ = position; }
  void SetUpdateInterval(int interval) override;
  void Command(std::string_view word) override;
  MultimediaMode Mode() const override;
  long Length() const override { return length_; }
  long Position() const override;

private:
  void Open();
  void Play();
  void Stop();
  void Close();
  void OutputLost();
  void RunStatusTimer();

  TimerService& timers_;
  SoundOutput& output_;
  std::string file_name_; // what the next opening opens
  std::optional<long> from_;
  int interval_ms_ = 0;
  TimerService::Token status_timer_ = TimerService::kNoTimer;

  bool open_ = false;
  std::string path_; // of the open file
  long length_ = 0;
  bool playing_ = false;      // the output runs, also beyond the end of the sound
  long position_ = 0;         // where the last play started, or where it was stopped
  bool silence_told_ = false; // that nothing can be heard
};

} // namespace kelmio

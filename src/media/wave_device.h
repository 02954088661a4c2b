// The multimedia device on a sound output and a microphone.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "media/sound_input.h"
#include "media/sound_output.h"
#include "media/wave_take.h"
#include "platform/event_loop.h"
#include "platform/multimedia_device.h"

namespace kelmio {

/// Opens any wave file that can be read. Opening reads the header and no more, so that a length costs little.
/// Without a sound device a file plays unheard: its position moves, and `Trouble` tells once for each opening.
/// A play for which no start was set goes on from the present position. The word for a file that can't be read waits
/// for the next "Play" or "Close": a recording doesn't need the file.
///
/// While it records, a timer fetches what the microphone heard, writes it and tells its level: all on the user
/// interface thread, since the disk gets 32 kB a second and the sound waits in the input meanwhile. A recording goes on
/// for 1000 seconds at most. One that ends at that limit, or because the microphone has gone, keeps what it has: the
/// mode stays `Recording` until "Save", "Stop" or "Close". One that the disk refuses is given up, and so is one that
/// hears nothing at all. "Save" opens what it has saved.
///
/// Timers, output and input outlive the device, which is their only user.
class WaveDevice : public MultimediaDevice {
public:
  /// No `input` is a computer without a microphone.
  WaveDevice(TimerService& timers, SoundOutput& output, SoundInput* input = nullptr);
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
  void Record();
  void Save();
  void Listen();
  bool Keep(std::span<const std::int16_t> samples);
  bool EndListening();
  void TellUnreadable();
  void RunStatusTimer();

  TimerService& timers_;
  SoundOutput& output_;
  SoundInput* const input_;
  std::string file_name_; // what the next opening opens
  std::optional<long> from_;
  int interval_ms_ = 0;
  TimerService::Token status_timer_ = TimerService::kNoTimer;

  bool open_ = false;       // for playing
  bool unreadable_ = false; // and nobody has been told
  std::string path_;        // that "Open" was given; empty when closed
  long length_ = 0;
  bool playing_ = false;      // the output runs, also beyond the end of the sound
  long position_ = 0;         // where the last play started, or where it was stopped
  bool silence_told_ = false; // that nothing can be heard

  std::unique_ptr<WaveTake> take_; // what is recorded and not saved
  bool recording_ = false;         // as the mode tells it
  TimerService::Token listen_timer_ = TimerService::kNoTimer;
  int silent_turns_ = 0; // of the timer, without a sample
};

} // namespace kelmio

// The sound of one call, as the line service uses it: play into the line, record it, watch it.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "telephony/tapi_control/line_driver.h"
#include "telephony/tapi_control/wave_format.h"

namespace kelmio {

/// What is asked of a recording.
struct RecordRequest {
  std::string path;               // the wave file; an existing one is replaced
  WaveFormatRecord format;        // one that `CallSoundFactory::CanRecord` takes
  bool watch_signal = false;      // report silence, voice and tones
  bool report_blocks = false;     // report each block of samples recorded
  std::size_t block_bytes = 2048; // size of a block, in bytes of the recorded format's 16-bit samples
  long max_seconds = 0;           // the recording stops by itself after so many seconds
};

/// What the sound of a call reports. Called on the user interface thread only, each from a closure of its
/// own (never from inside an operation of `CallSound`), and never after the `CallSound` is gone.
class CallSoundEvents {
public:
  virtual ~CallSoundEvents() = default;
  /// The wave file has been played to its end. Not reported after `StopPlay`.
  virtual void PlayDone() = 0;
  /// A recording has ended, by `StopRecord`, by its length limit or by an error; the file is closed.
  virtual void RecordDone() = 0;
  virtual void Silence() = 0;
  virtual void Voice() = 0;
  /// A steady call progress tone other than busy began; its strongest frequency in hertz.
  virtual void Tone(int hertz) = 0;
  /// Busy or congestion tone, by its cadence, or the howler of a handset left off.
  virtual void BusyTone() = 0;
  /// A digit heard in the sound.
  virtual void Digit(char digit) = 0;
  /// A block of 16-bit samples of the running recording, valid during the call.
  virtual void Block(std::span<const std::byte> samples) = 0;
  /// A plain word for the status pane, such as why a file can't be written.
  virtual void Trouble(const std::string& text) = 0;
};

/// User interface thread only. No operation blocks longer than finishing a file takes.
class CallSound {
public:
  virtual ~CallSound() = default;
  /// The end that the driver's sound thread talks to.
  virtual std::shared_ptr<SoundPort> Port() = 0;
  /// Starts to play a wave file of any common format and rate; a running one is replaced. False when it
  /// can't be opened or holds no sound.
  virtual bool Play(const std::string& path) = 0;
  virtual void StopPlay() = 0;
  /// Makes the file and starts to record both directions mixed; the file exists when this returns. False
  /// when it can't be made or a recording runs already.
  virtual bool Record(const RecordRequest& request) = 0;
  /// Finishes the file before it returns; `RecordDone` follows. Nothing happens with no recording running.
  virtual void StopRecord() = 0;
  /// The user speaks on this call: microphone and loudspeaker of the desk are its handset from now on, until
  /// `ReleaseDesk`, the end of this sound, or another call's `UseDesk`. They are closed at any other time. Why they
  /// can't be used is reported as `Trouble`; the call goes on without.
  virtual void UseDesk() = 0;
  /// Nothing happens when this call doesn't have the desk.
  virtual void ReleaseDesk() = 0;
};

/// Makes the sound of calls. User interface thread only; outlives every `CallSound` it made.
class CallSoundFactory {
public:
  virtual ~CallSoundFactory() = default;
  /// `events` outlives the result.
  virtual std::unique_ptr<CallSound> Create(CallSoundEvents& events) = 0;
  virtual bool CanRecord(const WaveFormatRecord& format) const = 0;
};

} // namespace kelmio

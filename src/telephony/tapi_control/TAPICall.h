// One call: answer it, play into it, record it, hang it up.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "telephony/tapi_control/call_sound.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

class SharedLine;
class TAPIExCtl;

/// How an operation on the telephone ended. Anything but Ok changed nothing.
enum class TAPIResult { Ok, CallEnded, NotPossible, BadFile };

/// The options of a recording, as words of its specification text; fields are joined by " | ".
inline constexpr std::string_view kMonitorSignal = "MONITOR:SIGNAL";
inline constexpr std::string_view kAccessWaveInBuffer = "ACCESS:WAVEINBUFFER";
inline constexpr std::string_view kFieldSeparator = " | ";

/// User interface thread only. All control instances that have the line open see the same object. It stays
/// usable, without effect, for as long as anyone holds it after the call has ended.
class TAPICall : public std::enable_shared_from_this<TAPICall>, private CallSoundEvents {
public:
  enum class Origin { Incoming, Outgoing, OffHook };

  TAPICall(SharedLine& line, std::shared_ptr<DeviceCall> device, Origin origin);
  TAPICall(const TAPICall&) = delete;
  TAPICall& operator=(const TAPICall&) = delete;
  ~TAPICall() override;

  /// `user_information` is for lines that carry some; no line does today.
  TAPIResult Accept(const std::string& user_information);
  void SetAcceptOption(long option) { accept_option_ = option; }
  /// `OnConnected` follows when the line is up. Ok without effect on an answered call.
  TAPIResult Answer();
  /// `OnDisConnected`, `OnIdle` and `OnEndCall` follow. Nothing happens on a call that has ended.
  void Hangup();

  /// Plays a wave file into the line; `OnPlayDone` follows at its end, and at once where the file can't be
  /// played.
  TAPIResult PlayFile(const std::string& path);
  void StopPlay();

  /// `specification` is the full path of the wave file and the options above. The file exists when this
  /// returns.
  TAPIResult RecordFile(const std::string& specification);
  /// Finishes the file before it returns; `OnRecordDone` follows. Nothing happens with no recording running.
  void StopRecord();

  /// The user speaks on this call, at the desk: from now on, or from when an incoming one is up, until its end.
  /// A line with a telephone of its own needs no desk, and nothing happens.
  /// Nothing else opens the microphone: on a call that the machine answers it stays closed.
  void UseDesk();

  /// The silence, in milliseconds, after which the caller of this interface means to end a recording. The
  /// signal watch doesn't wait for it: it reports silence when it starts.
  void SetSilenceTime(long milliseconds) { silence_time_ms_ = milliseconds; }
  long SilenceTime() const { return silence_time_ms_; }

  /// The current block of 16-bit samples; meant to be read inside `OnWaveInBuffer`.
  std::span<const std::byte> WaveInBuffer() const { return wave_in_; }

  /// Marks that are kept with the call and never interpreted.
  long RecordMark = 0;
  long AnswerMark = 0;

  // For the line only.
  DeviceCall& Device() { return *device_; }
  bool Ended() const { return phase_ == Phase::Ended; }
  void DeviceConnected();
  void DeviceDigit(char digit);
  /// Ends the call and tells `audience` in the order that every end has.
  void End(const std::vector<TAPIExCtl*>& audience);

private:
  enum class Phase { Waiting, Up, HangingUp, Ended };

  void PlayDone() override;
  void RecordDone() override;
  void Silence() override;
  void Voice() override;
  void Tone(int hertz) override;
  void BusyTone() override;
  void Digit(char digit) override;
  void Block(std::span<const std::byte> samples) override;
  void Trouble(const std::string& text) override;

  CallSound* Sound();
  void JoinDesk();

  SharedLine* line_; // nothing once the call has ended
  std::shared_ptr<DeviceCall> device_;
  Origin origin_;
  Phase phase_ = Phase::Waiting;
  std::unique_ptr<CallSound> sound_;
  std::vector<std::byte> wave_in_;
  long accept_option_ = 0;
  long silence_time_ms_ = 0;
  bool digits_by_signalling_ = false;
  bool desk_wanted_ = false;
};

} // namespace kelmio

// Listens to the far side of a call.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "media/dtmf_detector.h"
#include "media/howler_detector.h"
#include "media/tone_detector.h"
#include "media/voice_detector.h"

namespace kelmio {

/// Who is told what has been heard; called from inside `SignalWatch::Process`.
class SignalSink {
public:
  virtual ~SignalSink() = default;
  virtual void HeardSilence() = 0;
  virtual void HeardVoice() = 0;
  virtual void HeardTone(int hertz) = 0;
  virtual void HeardBusyTone() = 0;
  virtual void HeardDigit(char digit) = 0;
};

/// Busy tone and digits are always told; silence, voice and steady tones only while watched. Congestion tone and the
/// howler of a handset left off count as busy tone. It listens all the time, so that a watch that begins in the middle
/// of a call knows the noise of the line at once.
///
/// A tone is no voice. An exchange may give dial tone to a line whose caller has hung up, and the call ends as in
/// silence; but one who records at the handset hears it before he dials, so it ends nothing at once.
///
/// What is said on this side counts as voice as well: while the user speaks, the call isn't silent.
/// One thread at a time; allocates only when made.
class SignalWatch {
public:
  static constexpr int kRate = 8000; // samples per second

  explicit SignalWatch(SignalSink& sink) : sink_(sink) {}

  /// Silence or voice is told with the next stretch of sound, then each change between them.
  void StartWatching();
  void StopWatching() { watching_ = false; }
  void Process(std::span<const std::int16_t> samples);
  /// What this side says. Its state counts from the next stretch of the far side on.
  void ProcessNear(std::span<const std::int16_t> samples);
  /// Nobody speaks on this side any more.
  void ForgetNear();

private:
  using Block = std::array<std::int16_t, VoiceDetector::kBlock>;
  void ProcessBlock();

  SignalSink& sink_;
  VoiceDetector voice_;
  int voiced_blocks_ = 0; // of the voice that is heard, but for those of a tone
  ToneDetector tones_;
  HowlerDetector howler_;
  DtmfDetector digits_;
  Block block_{};
  std::size_t filled_ = 0;
  VoiceDetector near_voice_;
  VoiceDetector::State near_ = VoiceDetector::State::Unknown;
  Block near_block_{};
  std::size_t near_filled_ = 0;
  bool watching_ = false;
  VoiceDetector::State told_ = VoiceDetector::State::Unknown;
};

} // namespace kelmio

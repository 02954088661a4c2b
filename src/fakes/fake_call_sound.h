// The sound of a call, with its reports given by hand.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/event_loop.h"
#include "telephony/tapi_control/call_sound.h"

namespace kelmio {

class FakeSoundFactory;

/// Plays nothing and records a short true wave file of silence, so that the file is there and can be measured.
class FakeCallSound : public CallSound {
public:
  FakeCallSound(FakeSoundFactory& factory, CallSoundEvents& events);
  ~FakeCallSound() override;

  std::shared_ptr<SoundPort> Port() override { return port_; }
  bool Play(const std::string& path) override;
  void StopPlay() override { playing_.clear(); }
  bool Record(const RecordRequest& request) override;
  void StopRecord() override;
  void UseDesk() override { has_desk_ = true; }
  void ReleaseDesk() override { has_desk_ = false; }

  /// Whether microphone and loudspeaker are this call's.
  bool HasDesk() const { return has_desk_; }
  /// Path of what plays or is recorded now; empty when nothing is.
  const std::string& Playing() const { return playing_; }
  const std::string& Recording() const { return recording_; }
  const RecordRequest& LastRequest() const { return request_; }

  /// Give the report as the real thing would: from a closure of its own.
  void FinishPlay();
  void ReachLengthLimit();
  void Silence();
  void Voice();
  void Tone(int hertz);
  void BusyTone();
  void Digit(char digit);
  void Block(std::vector<std::byte> samples);
  void Trouble(std::string text);

private:
  void Report(std::function<void(CallSoundEvents&)> report);

  FakeSoundFactory& factory_; // may go before the sound does, which then is only destroyed
  std::shared_ptr<FakeCallSound*> current_;
  std::shared_ptr<CallSoundEvents*> events_;
  std::shared_ptr<SoundPort> port_;
  std::string playing_;
  std::string recording_;
  RecordRequest request_;
  bool has_desk_ = false;
};

class FakeSoundFactory : public CallSoundFactory {
public:
  explicit FakeSoundFactory(EventLoop& loop) : loop_(loop) {}

  std::unique_ptr<CallSound> Create(CallSoundEvents& events) override;
  bool CanRecord(const WaveFormatRecord& format) const override { return format.format_tag != unsupported_tag; }

  /// The sound made last; nothing when it is gone.
  FakeCallSound* Current() { return *current_; }
  EventLoop& Loop() { return loop_; }

  /// Recording fails, as on a full disk.
  bool fail_record = false;
  /// Playing fails, as with a damaged file.
  bool fail_play = false;
  /// A format tag that this line can't record.
  std::uint16_t unsupported_tag = 0xFFFF;

private:
  friend class FakeCallSound;
  EventLoop& loop_;
  std::shared_ptr<FakeCallSound*> current_ = std::make_shared<FakeCallSound*>(nullptr);
};

} // namespace kelmio

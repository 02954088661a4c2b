// A line that does what a test tells it to.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/event_loop.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

class ScriptedLine;

/// One call of the scripted line. What it reports comes from closures of their own, as from a real driver.
class ScriptedCall : public DeviceCall, public std::enable_shared_from_this<ScriptedCall> {
public:
  enum class Phase { Ringing, Dialing, OffHook, Up, Over };

  ScriptedCall(ScriptedLine& line, std::string number, Phase phase);

  bool Accept() override;
  bool Answer() override;
  void Hangup() override;
  void SetSoundPort(std::shared_ptr<SoundPort> port) override { port_ = std::move(port); }

  Phase NowIn() const { return phase_; }
  const std::string& Number() const { return number_; }
  int Answers() const { return answers_; }
  bool Accepted() const { return accepted_; }
  const std::shared_ptr<SoundPort>& Port() const { return port_; }

  // What the far end does.
  void Ring(int count);
  void SendCallerID(const std::string& name, const std::string& number);
  void SendDigit(char digit);
  void FarEndAnswers();
  void FarEndIsBusy();
  void FarEndHangsUp();

private:
  friend class ScriptedLine;
  void End();

  ScriptedLine* line_;
  std::string number_;
  Phase phase_;
  std::shared_ptr<SoundPort> port_;
  int answers_ = 0;
  bool accepted_ = false;
};

class ScriptedLine : public LineDevice, public std::enable_shared_from_this<ScriptedLine> {
public:
  ScriptedLine(EventLoop& loop, long device_id, std::uint32_t media_modes)
      : loop_(loop), device_id_(device_id), media_modes_(media_modes) {}

  long DeviceID() const override { return device_id_; }
  LineCaps Caps() const override;
  bool Open(LineEvents& events) override;
  void Close() override;
  std::shared_ptr<DeviceCall> MakeCall(const std::string& number) override;
  void Configure() override { ++configured_; }

  /// A call comes in; it doesn't ring before `ScriptedCall::Ring`.
  std::shared_ptr<ScriptedCall> Incoming();
  /// The call that is up or was up last.
  const std::shared_ptr<ScriptedCall>& LastCall() const { return last_call_; }
  bool IsOpen() const { return events_ != nullptr; }
  int Configured() const { return configured_; }

  /// Another program has the device.
  bool taken = false;
  LineStatus status;
  LineStatus Status() const override { return status; }
  /// `status` has been changed.
  void TellStatus();
  /// What the driver's `Watch` was given.
  std::function<void()> lines_changed;
  /// The telephone set behind the line.
  std::optional<PhoneCaps> phone;

private:
  friend class ScriptedCall;
  /// Posts a report; it is dropped when the line has been closed by then.
  void Report(std::function<void(LineEvents&)> report);

  EventLoop& loop_;
  long device_id_;
  std::uint32_t media_modes_;
  LineEvents* events_ = nullptr;
  int opened_ = 0;
  int configured_ = 0;
  std::shared_ptr<ScriptedCall> last_call_;
};

class ScriptedDriver : public LineDriver {
public:
  explicit ScriptedDriver(std::vector<std::shared_ptr<ScriptedLine>> lines) : lines_(std::move(lines)) {}
  std::vector<std::shared_ptr<LineDevice>> Lines() override { return {lines_.begin(), lines_.end()}; }
  /// Every line tells of its coming and going alike, so that a test needs no hold of the driver.
  void Watch(std::function<void()> changed) override {
    for (const auto& line : lines_)
      line->lines_changed = changed;
  }

private:
  std::vector<std::shared_ptr<ScriptedLine>> lines_;
};

} // namespace kelmio

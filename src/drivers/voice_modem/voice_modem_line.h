// One voice modem as the telephony control sees it.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drivers/lines_file.h"
#include "drivers/voice_modem/modem_config_dialog.h"
#include "drivers/voice_modem/modem_identity.h"
#include "drivers/voice_modem/modem_messages.h"
#include "drivers/voice_modem/modem_session.h"
#include "drivers/voice_modem/modem_settings.h"
#include "platform/event_loop.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// User interface thread only.
class VoiceModemLine : public LineDevice,
                       public ModemConfiguration,
                       public std::enable_shared_from_this<VoiceModemLine> {
public:
  /// What all modem lines share; it outlives them.
  struct House {
    EventLoop& loop;
    LinesFile file;
    ModemConfigDialog* dialog = nullptr; // without one, nothing can be configured
    double speed = 1;                    // see `ModemSession::Options`
    std::string lock_folder = kLockFolder;
    std::function<std::vector<ModemChoice>()> ports{};
    std::function<void(const std::string& port, bool in_use)> in_use{}; // by another program, as it seems when opening
  };

  /// `section` is the name of the line, in `Lines.ini` too.
  VoiceModemLine(House& house, std::string section, ModemSettings settings);
  /// Closes.
  ~VoiceModemLine() override;

  const std::string& Section() const { return section_; }
  /// What was found out about the modem. A line of which nothing is known yet can't be detected, but chosen.
  void SetKind(ModemKind kind, const std::string& model);
  /// Why nothing could be found out, for who looks at a line that isn't open.
  void SetTrouble(const std::string& trouble);
  /// The devices have changed: the one of an open line may be back.
  void DevicesChanged();

  long DeviceID() const override { return settings_.device_id; }
  LineCaps Caps() const override;
  bool Open(LineEvents& events) override;
  void Close() override;
  std::shared_ptr<DeviceCall> MakeCall(const std::string& number) override;
  void Configure() override;
  LineStatus Status() const override { return status_; }

  ModemSettings Settings() const override { return waiting_.value_or(settings_); }
  std::vector<ModemChoice> Ports() const override { return house_.ports ? house_.ports() : std::vector<ModemChoice>(); }
  std::string ModelInWords() const override { return model_; }
  std::string StateInWords() const override;
  ModemTakeOver TakeOver(const ModemSettings& settings) override;
  void Watch(std::function<void()> changed) override { changed_ = std::move(changed); }
  void Listen(std::function<void(const std::string& line)> line) override;

private:
  class Call;

  /// Empty when it runs, or why it doesn't. One that is `awaited` runs all the same, and looks for its device.
  std::string Start(const ModemSettings& settings, bool awaited = false);
  void Stop();
  ModemTakeOver TryTakeOver(const ModemSettings& settings);
  void Handle(const ModemReport& report);
  void HandleCall(const ModemReport& report);
  void TakeTrace(const std::string& line);
  void SetStatus(LineStatus::Health health, const std::string& words);
  void Changed();

  House& house_;
  const std::string section_;
  ModemSettings settings_;
  ModemKind kind_ = ModemKind::Silent;
  std::string model_;
  std::optional<ModemSettings> waiting_; // for the end of a call
  LineEvents* events_ = nullptr;         // of the open line
  std::unique_ptr<ModemSession> session_;
  std::uint64_t opened_ = 0; // counts sessions, so that a late report of an old one is told apart
  ModemCallNumber next_call_ = 1;
  std::shared_ptr<Call> call_; // the one that rings or is up
  LineStatus status_;
  std::deque<std::string> trace_; // the last lines
  std::function<void(const std::string&)> listener_;
  std::function<void()> changed_;
};

} // namespace kelmio

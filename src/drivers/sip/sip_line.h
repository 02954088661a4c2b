// The SIP line as the telephony control sees it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "drivers/lines_file.h"
#include "drivers/sip/sip_config_dialog.h"
#include "drivers/sip/sip_session.h"
#include "drivers/sip/sip_settings.h"
#include "platform/event_loop.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// One line: at an address of its own for direct calls, or with an account. User interface thread only.
class SipLine : public LineDevice, public SipConfiguration, private SipSessionOwner {
public:
  /// `loop` outlives the line. Settings with an account that isn't set up make a line that waits for one.
  SipLine(EventLoop& loop, SipSettings settings);
  /// Closes.
  ~SipLine() override;

  /// Lets the user set the line up; what he chooses is written to `file`. `dialog` outlives the line.
  void SetConfigDialog(SipConfigDialog& dialog, LinesFile file);
  /// Of an account: the number under which it stands in the file, and who hears when it has been set up or removed.
  void SetAccount(int number, std::function<void()> changed);
  /// True on a line for direct calls too.
  bool IsSetUp() const;

  long DeviceID() const override { return settings_.device_id; }
  LineCaps Caps() const override;
  bool Open(LineEvents& events) override;
  void Close() override;
  std::shared_ptr<DeviceCall> MakeCall(const std::string& number) override;
  void Configure() override;
  LineStatus Status() const override;

  SipSettings Settings() const override { return waiting_.value_or(settings_); }
  std::string StateInWords() const override;
  SipTakeOver TakeOver(const SipSettings& settings) override;
  std::string Test(const SipSettings& settings) override;
  void TryAccount(const SipSettings& settings, std::function<void(std::string words)> told) override;
  SipTakeOver RemoveAccount() override;
  void Watch(std::function<void()> changed) override { changed_ = std::move(changed); }

  /// The port that is bound while the line is open; 0 otherwise.
  std::uint16_t Port() const;

private:
  struct Trial;

  void CallBegan() override;
  void CallOver() override { TakeOverWaiting(); }
  void AccountStands(LineStatus::Health health, const std::string& words, const std::string& reason) override;

  std::shared_ptr<SipSession> NewSession(LineEvents& events);
  std::string LogName() const;
  void SetStatus(LineStatus::Health health, std::string words);
  bool WriteSettings() const;
  SipTakeOver TryTakeOver(const SipSettings& next);
  SipTakeOver Adopt(const SipSettings& next);
  void TakeOverWaiting();

  EventLoop& loop_;
  SipSettings settings_;
  std::optional<SipSettings> waiting_; // for the end of a call
  int open_error_ = 0;                 // why the line isn't reachable although it was opened
  LineEvents* events_ = nullptr;       // of the open line
  bool removed_ = false;               // the open line's account; the next one runs at once
  std::shared_ptr<SipSession> session_;
  std::optional<LinesFile> file_;
  SipConfigDialog* dialog_ = nullptr;
  int account_number_ = 0;
  std::function<void()> account_changed_;
  LineStatus status_;
  std::string logged_reason_;
  std::shared_ptr<Trial> trial_;
  std::function<void()> changed_;
};

} // namespace kelmio

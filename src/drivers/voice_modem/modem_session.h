// The thread of one open modem: from the open device to waiting for calls, through calls, and out of trouble.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "drivers/voice_modem/modem_conversation.h"
#include "drivers/voice_modem/modem_identity.h"
#include "drivers/voice_modem/modem_link.h"
#include "drivers/voice_modem/modem_messages.h"
#include "drivers/voice_modem/modem_settings.h"
#include "drivers/voice_modem/ring_watch.h"
#include "drivers/voice_modem/serial_port.h"

namespace kelmio {

/// The call that rings or is up, on the modem's thread.
struct ModemCall {
  ModemCallNumber number = 0;
  bool hang_up = false; // by this side
  bool gone = false;    // the far end has hung up
  bool joined = false;  // with the telephone beside the modem
  std::shared_ptr<SoundPort> port{};
};

/// The public functions belong to the user interface thread. Reports come on the modem's thread, none once `Stop` has
/// returned. A modem that doesn't answer, loses its class or is pulled out is set up again for as long as it takes.
class ModemSession {
public:
  struct Options {
    ModemSettings settings;
    std::string lock_folder = kLockFolder;
    double speed = 1; // seconds of the modem a second, for one that is emulated
  };

  /// Takes `port`, which is open, or null to look for the device first. Calls are numbered from `first_call` on.
  ModemSession(Options options, std::unique_ptr<ModemPort> port, ModemReportSink sink, ModemCallNumber first_call = 1);
  /// Stops.
  ~ModemSession();
  ModemSession(const ModemSession&) = delete;
  ModemSession& operator=(const ModemSession&) = delete;

  void Push(ModemCommand command);
  ModemCallNumber NextCallNumber() { return next_call_.fetch_add(1); }

  /// Hangs up a call that is up, closes the device and ends the thread: a few seconds with a call up, at once without,
  /// whether the modem answers or not.
  void Stop();

private:
  using Seconds = ModemClock::Seconds;

  // Modem's thread.
  void Run();
  bool Reopen();
  bool SetUp();
  bool Arm();
  void WaitForCalls();
  void TakeCommands();
  void Execute(ModemCommand& command);
  void TakeReply(const ModemReply& reply);
  void TakeCodeInCall(char code);
  void TakeDigit(char digit);
  bool IsHangUpCode();
  bool IsWanted(std::string_view ring) const;

  void AnswerCall();
  void PlaceCall(const std::string& number);
  bool Dial(const std::string& keys);
  bool TakeLine(int device);
  bool PrepareVoice();
  void Converse();
  void HangUp();
  void EndCall();
  bool CallOver();

  bool Recover();
  void Lose(const std::string& words);
  void LoseHope(const std::string& words);

  void Report(ModemReport report) const { sink_(std::move(report)); }
  void ReportState(CallState state);
  void Log(const std::string& text) const;
  /// Told until trying has become the usual.
  void Try(const std::string& words);
  void SetHealth(LineStatus::Health health, const std::string& words);
  void Sleep(Seconds time);
  RingWatch::Events RingEvents();
  ModemLink::Sinks LinkSinks();

  const Options options_;
  const ModemReportSink sink_;
  const ModemClock clock_;
  ModemWake wake_;
  std::atomic<ModemCallNumber> next_call_;
  std::atomic<bool> quit_asked_ = false;
  std::mutex mutex_;
  std::vector<ModemCommand> commands_; // guarded by `mutex_`

  // Modem's thread only.
  bool quit_ = false;
  std::unique_ptr<ModemLink> link_;
  std::optional<ModemIdentity> identity_; // nothing: it has to be asked
  int failures_ = 0;                      // to set it up, in a row
  bool hopeless_ = false;                 // until the devices change, trying is done quietly and seldom
  bool armed_ = false;
  bool stirred_ = false; // something came that may be due for a look
  RingWatch rings_;
  std::optional<Seconds> unwanted_ring_at_; // of another number on this line
  std::optional<ModemCall> call_;
  bool answer_ = false;
  std::optional<std::string> dial_;
  bool answering_ = false;
  bool off_hook_ = false;
  Seconds off_hook_since_{0};
  Seconds on_hook_since_{0};
  ModemConversation* conversation_ = nullptr; // the one that is on
  CallState reported_ = CallState::Unknown;
  bool key_held_ = false;
  char last_digit_ = 0;
  Seconds last_digit_at_{0};
  std::optional<Seconds> hang_up_code_at_;
  LineStatus::Health health_ = LineStatus::Health::Off;
  std::string health_words_;

  std::thread thread_; // last: it uses all of the above
};

} // namespace kelmio

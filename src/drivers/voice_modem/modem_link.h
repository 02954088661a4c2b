// The talk with a modem: one command at a time, what comes unasked, and the stream of samples in between.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drivers/voice_modem/dle_codec.h"
#include "drivers/voice_modem/modem_clock.h"
#include "drivers/voice_modem/modem_port.h"
#include "drivers/voice_modem/reply_parser.h"

namespace kelmio {

/// How a command ended.
struct CommandResult {
  std::optional<FinalCode> final; // nothing when the modem didn't answer in time or is gone
  std::vector<std::string> lines; // of information

  /// VCON is how some modems say OK in voice.
  bool Ok() const { return final == FinalCode::Ok || final == FinalCode::VoiceConnected; }
};

/// Wakes up a thread that waits at a modem. Any thread.
class ModemWake {
public:
  ModemWake();
  ~ModemWake();
  ModemWake(const ModemWake&) = delete;
  ModemWake& operator=(const ModemWake&) = delete;
  void Wake();
  void Clear();
  int Descriptor() const { return descriptor_; }

private:
  int descriptor_;
};

/// Owns the port, and is the only one who reads it. All on one thread. Nothing here waits longer than it is told to.
class ModemLink {
public:
  using Seconds = ModemClock::Seconds;

  /// What comes without having been asked for. A handler may send, but not wait.
  struct Sinks {
    std::function<void(const ModemReply&)> reply;        // anything but final codes and information of a command
    std::function<void(std::string_view bytes)> samples; // of a recording
    std::function<void(const std::string&)> trace;       // each command and reply as a printable line
    std::function<bool()> given_up{};                    // nobody waits for the modem any more
    std::function<bool()> hurried{};                     // somebody waits for the last commands to be over
  };

  /// `clock` and `wake` outlive the link.
  ModemLink(std::unique_ptr<ModemPort> port, const ModemClock& clock, ModemWake& wake, Sinks sinks);

  /// The device is gone, or given up: nothing is waited for any more.
  bool Gone() const { return gone_ || (sinks_.given_up && sinks_.given_up()); }
  ModemPort& Port() { return *port_; }

  /// Sends `text` and waits for its final code. `abandon`, asked at each wake-up, breaks it off as ATD and ATA allow:
  /// by another character.
  CommandResult Command(std::string_view text, Seconds limit, const std::function<bool()>& abandon = {});

  /// Takes what comes until `until` of the clock, until woken, or until `enough` holds.
  void Wait(Seconds until, const std::function<bool()>& enough = {});

  /// Begins a recording with the byte behind CONNECT. Until its end mark all that comes is samples and codes.
  CommandResult StartReceiving(Seconds limit);
  bool Receiving() const { return receiving_; }

  /// The final code that came without a command since the last call.
  std::optional<FinalCode> TakeStrayFinal();

  /// Queues bytes; what the modem doesn't take yet is sent while something is waited for.
  void Send(std::string_view bytes);
  std::size_t Unsent() const { return unsent_.size(); }
  void DropUnsent() { unsent_.clear(); }
  /// Puts a line of its own into the trace.
  void Trace(const std::string& line) const;

  /// Forgets everything that is on its way, before another try to be understood.
  void Restart();

private:
  void Flush();
  void Read();
  void Take(std::string_view bytes);
  void TakeReply(const ModemReply& reply);

  std::unique_ptr<ModemPort> port_;
  const ModemClock& clock_;
  ModemWake& wake_;
  Sinks sinks_;
  ReplyParser parser_;
  DleDecoder decoder_;
  std::string unsent_;
  std::string samples_;
  std::size_t received_ = 0; // samples' bytes of this recording
  bool gone_ = false;
  bool receiving_ = false;
  bool receive_next_ = false; // CONNECT begins a recording
  bool asked_ = false;        // a command waits for its final code
  CommandResult result_;
  std::optional<FinalCode> stray_;
  Seconds quiet_until_{0}; // before it no command is sent
};

/// A word of the modem's as a user can read it: control characters by their names.
std::string PrintableReply(const ModemReply& reply);

} // namespace kelmio

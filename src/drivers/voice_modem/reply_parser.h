// What a modem says in command state: result codes, rings, caller identity, information, and codes between the lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kelmio {

/// How a command ended (ITU-T V.250, table 1, and the words that voice modems add).
enum class FinalCode : std::uint8_t {
  Ok,
  Connect,
  NoCarrier,
  Error,
  NoDialTone,
  Busy,
  NoAnswer,
  VoiceConnected, // VCON, which some modems say for OK
  LineInUse,
  Refused, // DELAYED or BLACKLISTED: the modem won't dial this number now
};

enum class ReplyKind : std::uint8_t {
  Final,       // `final` says which
  Ring,        // also the distinctive ones
  RingBack,    // RINGING: the called end rings
  Cadence,     // DRON, DROF and the like: lengths of ring bursts, in `text`
  CallerId,    // one line of a report, in `text`; `CallerIdReport` reads it
  Information, // any other line, in `text`, without blanks around it
  Code,        // <DLE> and `code`
};

struct ModemReply {
  ReplyKind kind = ReplyKind::Information;
  FinalCode final = FinalCode::Ok;
  char code = 0;
  std::string text;
};

/// Makes replies of the bytes that come while no samples flow. Lines and codes may be cut into reads anywhere, and what
/// comes unasked may stand between a command and its result: every reply is told by its content alone. Any one thread.
class ReplyParser {
public:
  /// Its parts are all reports; the text of a packet (<DLE>X to <DLE>.) comes as lines like any others.
  using Sink = std::function<void(const ModemReply&)>;

  /// What is sent next, without its end; the modem may echo it, and the echo is no reply.
  void ExpectEcho(std::string_view command) { echo_ = command; }

  /// Gives replies to `sink` and returns how many bytes were taken: all of them, or those up to the end of CONNECT's
  /// line, after which the first sample stands.
  std::size_t Push(std::string_view bytes, const Sink& sink);

  /// Forgets a half line, after a stream or when the port was opened anew.
  void Reset();

private:
  void Add(char byte);
  void EndLine(const Sink& sink);
  void TakeCode(char code, const Sink& sink);

  std::string line_;
  std::string outside_packet_; // the half line that a packet broke into
  std::string echo_;
  bool in_packet_ = false;
  bool after_dle_ = false;
  bool connecting_ = false; // CONNECT's line has had its CR
};

} // namespace kelmio

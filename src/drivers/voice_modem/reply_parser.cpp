#include "drivers/voice_modem/reply_parser.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "core/text.h"
#include "drivers/voice_modem/caller_id_report.h"
#include "drivers/voice_modem/dle_codec.h"

namespace kelmio {
namespace {

/// No reply is as long as this; the rest of a longer line is dropped, so that noise takes no memory.
constexpr std::size_t kLongestLine = 2048;

constexpr char kPacketBegin = 'X';
constexpr char kPacketEnd = '.';

constexpr std::array kFinalWords{
    std::pair{std::string_view("OK"), FinalCode::Ok},
    std::pair{std::string_view("NO CARRIER"), FinalCode::NoCarrier},
    std::pair{std::string_view("ERROR"), FinalCode::Error},
    std::pair{std::string_view("NO DIALTONE"), FinalCode::NoDialTone},
    std::pair{std::string_view("NO DIAL TONE"), FinalCode::NoDialTone},
    std::pair{std::string_view("BUSY"), FinalCode::Busy},
    std::pair{std::string_view("NO ANSWER"), FinalCode::NoAnswer},
    std::pair{std::string_view("VCON"), FinalCode::VoiceConnected},
    std::pair{std::string_view("LINE-IN-USE"), FinalCode::LineInUse},
    std::pair{std::string_view("LINE IN USE"), FinalCode::LineInUse},
    std::pair{std::string_view("OFF-HOOK INTRUSION"), FinalCode::LineInUse},
};

constexpr std::array<std::string_view, 6> kCadenceWords{"DRON", "DROF", "CPON", "CPOF", "CWON", "CWOF"};

constexpr std::string_view kBlanks = " \t\v\f";

std::optional<FinalCode> FinalOf(std::string_view line) {
  // Modems may add a speed to CONNECT, and to DELAYED a time.
  const std::string_view word = line.substr(0, line.find(' '));
  if (word == "CONNECT")
    return FinalCode::Connect;
  if (word == "DELAYED" || word == "BLACKLISTED")
    return FinalCode::Refused;
  const auto* found =
      std::find_if(kFinalWords.begin(), kFinalWords.end(), [&](const auto& entry) { return entry.first == line; });
  if (found == kFinalWords.end())
    return std::nullopt;
  return found->second;
}

bool IsConnect(std::string_view line) {
  return FinalOf(Trimmed(line, kBlanks)) == FinalCode::Connect;
}

/// RING, RING A to E, RING 1 to 5, and RING;from;to.
bool IsRing(std::string_view line) {
  constexpr std::string_view kRing = "RING";
  if (!line.starts_with(kRing))
    return false;
  line.remove_prefix(kRing.size());
  return line.empty() || line.front() == ' ' || line.front() == ';';
}

bool IsCadence(std::string_view line) {
  return line.size() > 4 &&
         std::find(kCadenceWords.begin(), kCadenceWords.end(), line.substr(0, 4)) != kCadenceWords.end() &&
         (line[4] == '=' || line[4] == ' ' || line[4] == ':');
}

ModemReply ReplyOf(std::string_view line) {
  ModemReply reply;
  reply.text = line;
  if (const auto final = FinalOf(line)) {
    reply.kind = ReplyKind::Final;
    reply.final = *final;
  } else if (line == "RINGING") {
    reply.kind = ReplyKind::RingBack;
  } else if (IsRing(line)) {
    reply.kind = ReplyKind::Ring;
  } else if (IsCadence(line)) {
    reply.kind = ReplyKind::Cadence;
  } else if (IsCallerIdLine(line)) {
    reply.kind = ReplyKind::CallerId;
  }
  return reply;
}

} // namespace

void ReplyParser::Reset() {
  line_.clear();
  outside_packet_.clear();
  in_packet_ = false;
  after_dle_ = false;
  connecting_ = false;
}

void ReplyParser::Add(char byte) {
  if (line_.size() < kLongestLine)
    line_.push_back(byte);
}

void ReplyParser::EndLine(const Sink& sink) {
  const std::string whole = std::exchange(line_, {});
  const std::string_view line = Trimmed(whole, kBlanks);
  if (line.empty() || (!echo_.empty() && line == echo_))
    return;
  sink(ReplyOf(line));
}

void ReplyParser::TakeCode(char code, const Sink& sink) {
  if (code == kPacketBegin && !in_packet_) {
    in_packet_ = true;
    outside_packet_ = std::exchange(line_, {});
  } else if (code == kPacketEnd && in_packet_) {
    in_packet_ = false;
    // The last line of a packet may lack its end. CONNECT can't: where its line ends the samples begin.
    if (!IsConnect(line_))
      EndLine(sink);
    line_ = std::exchange(outside_packet_, {});
  }
  ModemReply reply;
  reply.kind = ReplyKind::Code;
  reply.code = code;
  sink(reply);
}

std::size_t ReplyParser::Push(std::string_view bytes, const Sink& sink) {
  std::size_t taken = 0;
  for (const char byte : bytes) {
    if (connecting_) {
      // The samples begin after the LF. A unit that sends none has begun them already.
      if (byte == '\r') {
        ++taken;
        continue;
      }
      taken += byte == '\n' ? 1 : 0;
      connecting_ = false;
      EndLine(sink);
      return taken;
    }
    ++taken;
    if (std::exchange(after_dle_, false)) {
      TakeCode(byte, sink);
    } else if (byte == kDle) {
      after_dle_ = true;
    } else if (byte == '\r' || byte == '\n') {
      const bool connect = IsConnect(line_);
      connecting_ = connect && byte == '\r';
      if (connecting_)
        continue;
      EndLine(sink);
      if (connect)
        return taken;
    } else {
      Add(byte);
    }
  }
  return taken;
}

} // namespace kelmio

// What a modem says, in the forms in which units of several makes say it, and in reads cut anywhere.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "drivers/voice_modem/caller_id_report.h"
#include "drivers/voice_modem/dle_codec.h"
#include "drivers/voice_modem/reply_parser.h"

namespace kelmio {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

std::string Shown(const ModemReply& reply) {
  switch (reply.kind) {
  case ReplyKind::Final:
    return "final " + std::to_string(static_cast<int>(reply.final));
  case ReplyKind::Code:
    return std::string("code ") + reply.code;
  case ReplyKind::Ring:
    return "ring";
  case ReplyKind::RingBack:
    return "ring back";
  case ReplyKind::Cadence:
    return "cadence " + reply.text;
  case ReplyKind::CallerId:
    return "caller " + reply.text;
  case ReplyKind::Information:
    break;
  }
  return reply.text;
}

const std::string kOk = "final 0";
const std::string kConnect = "final 1";

struct Heard {
  std::vector<std::string> replies;
  std::string rest;
};

/// Pushes `bytes` in reads of `step` until CONNECT.
Heard Hear(const std::string& bytes, std::size_t step, const std::string& command = "AT+VLS=1") {
  Heard heard;
  ReplyParser parser;
  parser.ExpectEcho(command);
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    const std::string read = bytes.substr(at, step);
    const std::size_t taken =
        parser.Push(read, [&](const ModemReply& reply) { heard.replies.push_back(Shown(reply)); });
    if (!heard.replies.empty() && heard.replies.back() == kConnect) {
      heard.rest = bytes.substr(at + taken);
      break;
    }
    EXPECT_EQ(taken, read.size());
  }
  return heard;
}

TEST(ReplyParserTest, TellsRepliesByTheirContentHoweverTheyAreCut) {
  struct Case {
    std::string bytes;
    std::vector<std::string> replies;
  };
  const std::vector<Case> cases{
      {"AT+VLS=1\r\r\nOK\r\n", {kOk}},
      {"\r\n\r\n\r\nOK \r\n\r\n", {kOk}},
      {"\r\n+VSD: 0,50\r\n\r\nOK\r\n", {"+VSD: 0,50", kOk}},
      {"\r\n128,50\r\nRING\r\n\r\nOK\r\n", {"128,50", "ring", kOk}},
      {"\r\nRING A\r\nRING 2\r\nRINGING\r\nRINGER\r\n", {"ring", "ring", "ring back", "RINGER"}},
      {"\r\nDRON=20\r\nDROF=40\r\n", {"cadence DRON=20", "cadence DROF=40"}},
      {"\r\nNMBR = 5551234\r\nOK\r\n", {"caller NMBR = 5551234", kOk}},
      {"\r\nO\x10RK\r\n", {"code R", kOk}},
      {"\x10R\x10/\x10"
       "5\x10~",
       {"code R", "code /", "code 5", "code ~"}},
      {"\r\n+VLS: \x10X\r\nNMBR = 1\r\nNAME = A\x10.1\r\n",
       {"code X", "caller NMBR = 1", "caller NAME = A", "code .", "+VLS: 1"}},
      {"NO DIALTONE\rNO DIAL TONE\rVCON\rNO CARRIER\rDELAYED 00:02\r",
       {"final 4", "final 4", "final 7", "final 2", "final 9"}},
  };
  for (const Case& one : cases) {
    for (const std::size_t step : {std::size_t{1}, std::size_t{3}, one.bytes.size()})
      EXPECT_THAT(Hear(one.bytes, step).replies, ElementsAreArray(one.replies)) << one.bytes << " by " << step;
  }
}

TEST(ReplyParserTest, LeavesTheFirstSampleAfterConnect) {
  for (const std::string end : {"\r\n", "\n", "\r\r\n"}) {
    for (const std::size_t step : {std::size_t{1}, std::size_t{100}}) {
      const Heard heard = Hear("\r\nRING\r\n\r\nCONNECT" + end + "\nOK\r\n", step);
      EXPECT_THAT(heard.replies, ElementsAre("ring", kConnect));
      EXPECT_EQ(heard.rest, "\nOK\r\n") << "a sample that looks like a line end";
    }
  }
}

TEST(ReplyParserTest, NoiseTakesNoMemoryAndHoldsUpNothing) {
  const Heard heard = Hear(std::string(1000000, 'x') + "\r\nOK\r\n", 4096);
  ASSERT_EQ(heard.replies.size(), 2U);
  EXPECT_LT(heard.replies[0].size(), 4096U);
  EXPECT_EQ(heard.replies[1], kOk);
}

TEST(DleCodecTest, GivesBackEverySampleFromReadsCutAnywhere) {
  std::string samples;
  for (int byte = 0; byte < 256; ++byte)
    samples += std::string(static_cast<std::size_t>(byte) % 4, kDle) + static_cast<char>(byte);
  const std::string stream =
      ShieldSamples(samples) + DleCommand('b') + DleCommand(kSub) + "a" + DleCommand(kEtx) + "\r\nOK\r\n";
  for (std::size_t step = 1; step < 20; ++step) {
    DleDecoder decoder;
    std::string heard;
    std::string codes;
    std::string rest;
    for (std::size_t at = 0; at < stream.size(); at += step) {
      const std::string read = stream.substr(at, step);
      const auto after = decoder.Push(read, heard, [&](char code) { codes += code; });
      if (after) {
        rest = std::string(*after) + stream.substr(std::min(at + step, stream.size()));
        break;
      }
    }
    EXPECT_EQ(heard, samples + kDle + kDle + "a");
    EXPECT_EQ(codes, std::string("b") + kEtx);
    EXPECT_EQ(rest, "\r\nOK\r\n");
  }
}

TEST(CallerIdReportTest, ReadsEverySpelling) {
  struct Case {
    std::vector<std::string> lines;
    std::string name;
    std::string number;
    bool whole;
  };
  const std::string latin1 = "NAME = M\xFCller\x01";
  const std::vector<Case> cases{
      {{"DATE = 1015", "TIME = 2038", "NMBR = 8475550001", "NAME = U.S.ROBOTICS"}, "U.S.ROBOTICS", "8475550001", true},
      {{"MESG = 110101", "DATE=", "TIME=", "NAME=Jane", "NMBR=  5551234  "}, "Jane", "5551234", true},
      {{"DDN_NMBR=5551234", "NMBR = O"}, "", "5551234", false},
      {{"NMBR = P", "NAME = Restricted"}, "", "", false},
      {{latin1, "NBR=1"}, "M\xC3\xBCller", "1", false},
      {{"NAME=M\xC3\xBCller"}, "M\xC3\xBCller", "", false},
      {{"FM:5551234 TO:5556789"}, "", "5551234", false},
      {{"CALLER NUMBER: 5551234"}, "", "5551234", false},
      {{"NAME = " + std::string(300, 'a')}, std::string(80, 'a'), "", false},
      {{"802401083130313532303338020A38343735353530303031070C552E532E524F424F5449435334"},
       "U.S.ROBOTICS",
       "8475550001",
       true},
      {{"800D0108313031353230333804015081"}, "", "", true},
  };
  for (const Case& one : cases) {
    CallerIdReport report;
    for (const std::string& line : one.lines) {
      EXPECT_TRUE(IsCallerIdLine(line)) << line;
      report.Add(line);
    }
    EXPECT_EQ(report.Name(), one.name) << one.lines[0];
    EXPECT_EQ(report.Number(), one.number) << one.lines[0];
    EXPECT_EQ(report.Whole(), one.whole) << one.lines[0];
  }
  for (const std::string line : {"800D0108313031353230333804015082", "128", "+VSD: 0,50", "56000", "80FF", "CIDM", "="})
    EXPECT_FALSE(IsCallerIdLine(line)) << line;
}

} // namespace
} // namespace kelmio

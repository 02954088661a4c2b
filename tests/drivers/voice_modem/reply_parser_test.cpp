// What a modem says, in the forms in which units of several makes say it.
#include <gmock/gmock.h>

#include <array>
#include <string>
#include <vector>

#include "drivers/voice_modem/caller_id_report.h"
#include "drivers/voice_modem/dle_codec.h"
#include "drivers/voice_modem/reply_parser.h"

namespace kelmio {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

/// Its kind, and what it says.
std::string Shown(const ModemReply& reply) {
  constexpr std::array kKinds{"final ", "ring ", "ring back ", "cadence ", "caller ", "", "code "};
  const std::string kind = kKinds.at(static_cast<std::size_t>(reply.kind));
  if (reply.kind == ReplyKind::Final)
    return kind + std::to_string(static_cast<int>(reply.final));
  return kind + (reply.kind == ReplyKind::Code ? std::string(1, reply.code) : reply.text);
}

const std::string kOk = "final 0";

struct Heard {
  std::vector<std::string> replies;
  std::string rest;
};

/// Of `bytes` in one read, up to CONNECT. Where reads are cut makes no difference: the fuzz test's matter.
Heard Hear(const std::string& bytes) {
  Heard heard;
  ReplyParser parser;
  parser.ExpectEcho("AT+VLS=1");
  heard.rest =
      bytes.substr(parser.Push(bytes, [&](const ModemReply& reply) { heard.replies.push_back(Shown(reply)); }));
  return heard;
}

TEST(ReplyParserTest, TellsRepliesByTheirContent) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
      {"AT+VLS=1\r\r\nOK\r\n", {kOk}},
      {"\r\n\r\n\r\nOK \r\n\r\n", {kOk}},
      {"\r\n+VSD: 0,50\r\n\r\nOK\r\n", {"+VSD: 0,50", kOk}},
      {"\r\n128,50\r\nRING\r\n\r\nOK\r\n", {"128,50", "ring RING", kOk}},
      {"\r\nRING A\r\nRING 2\r\nRINGING\r\nRINGER\r\n", {"ring RING A", "ring RING 2", "ring back RINGING", "RINGER"}},
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
      {std::string(1000000, 'x') + "\r\nOK\r\n", {std::string(2048, 'x'), kOk}}, // noise takes no memory
  };
  for (const auto& [bytes, replies] : cases)
    EXPECT_THAT(Hear(bytes).replies, ElementsAreArray(replies)) << bytes;
}

TEST(ReplyParserTest, LeavesTheFirstSampleAfterConnect) {
  for (const std::string end : {"\r\n", "\n", "\r\r\n"}) {
    const Heard heard = Hear("\r\nRING\r\n\r\nCONNECT" + end + "\nOK\r\n");
    EXPECT_THAT(heard.replies, ElementsAre("ring RING", "final 1"));
    EXPECT_EQ(heard.rest, "\nOK\r\n") << "a sample that looks like a line end";
  }
}

TEST(DleCodecTest, GivesBackEverySampleAndTheCodesAmongThem) {
  std::string samples;
  for (int byte = 0; byte < 256; ++byte)
    samples += std::string(static_cast<std::size_t>(byte) % 4, kDle) + static_cast<char>(byte);
  const std::string stream =
      ShieldSamples(samples) + DleCommand('b') + DleCommand(kSub) + "a" + DleCommand(kEtx) + "\r\nOK\r\n";
  DleDecoder decoder;
  std::string heard;
  std::string codes;
  EXPECT_EQ(decoder.Push(stream, heard, [&](char code) { codes += code; }), "\r\nOK\r\n");
  EXPECT_EQ(heard, samples + kDle + kDle + "a");
  EXPECT_EQ(codes, std::string("b") + kEtx);
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

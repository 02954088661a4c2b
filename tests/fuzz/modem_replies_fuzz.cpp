// What a modem sends: lines, codes, caller identity and samples in one stream, in reads of any length.
#include <algorithm>

#include "drivers/voice_modem/caller_id_report.h"
#include "drivers/voice_modem/dle_codec.h"
#include "drivers/voice_modem/reply_parser.h"
#include "drivers/voice_modem/voice_formats.h"
#include "fuzz/fuzz_target.h"

namespace kelmio::fuzz {
namespace {

constexpr std::size_t kLongestReply = 2048;
constexpr std::size_t kLongestIdentity = 84; // a last letter may take four bytes

/// Takes a stream as a driver does: replies, and after CONNECT samples up to their end.
class Reader {
public:
  void Read(std::string_view bytes) {
    while (!bytes.empty()) {
      if (streaming_) {
        bytes = ReadSamples(bytes);
        continue;
      }
      const std::size_t taken = parser_.Push(bytes, [this](const ModemReply& reply) { Take(reply); });
      Check(taken <= bytes.size() && (streaming_ || taken == bytes.size()), "no byte is taken twice or left");
      bytes.remove_prefix(taken);
    }
  }

  /// All that was read, in order.
  const std::string& Told() const { return told_; }
  const std::vector<VoiceFormatRow>& Rows() const { return rows_; }
  const std::string& Samples() const { return samples_; }

private:
  void Take(const ModemReply& reply) {
    told_ += std::to_string(static_cast<int>(reply.kind)) + reply.code + reply.text + '\n';
    Check(reply.text.size() <= kLongestReply, "a reply has an end");
    Check(reply.text.find_first_of("\r\n\x10") == std::string::npos, "a line holds no line ends and codes");
    if (reply.kind == ReplyKind::Final && reply.final == FinalCode::Connect)
      streaming_ = true;
    if (reply.kind == ReplyKind::CallerId) {
      report_.Add(reply.text);
      CheckShown(report_.Name(), kLongestIdentity);
      CheckShown(report_.Number(), kLongestIdentity);
      told_ += report_.Name() + report_.Number();
    }
    if (const auto row = ReadVoiceFormatRow(reply.text))
      rows_.push_back(*row);
  }

  std::string_view ReadSamples(std::string_view bytes) {
    const std::size_t before = samples_.size();
    std::size_t codes = 0;
    const auto rest = decoder_.Push(bytes, samples_, [&](char code) {
      told_ += code;
      ++codes;
    });
    Check(samples_.size() - before + codes <= bytes.size() + 1, "no more samples than bytes, a <DLE> before included");
    if (rest)
      streaming_ = false;
    return rest.value_or(std::string_view{});
  }

  ReplyParser parser_;
  CallerIdReport report_;
  DleDecoder decoder_;
  std::vector<VoiceFormatRow> rows_;
  std::string samples_;
  std::string told_;
  bool streaming_ = false;
};

void CheckSound(const std::vector<VoiceFormatRow>& rows, const std::string& samples) {
  const auto format = ChooseVoiceFormat(rows).value_or(VoiceFormat{});
  std::vector<std::int16_t> heard;
  const std::size_t taken = DecodeVoice(format, samples, heard);
  const auto width = static_cast<std::size_t>(BytesPerSample(format.coding));
  Check(taken <= samples.size() && heard.size() * width == taken, "each sample has its bytes");

  std::string said;
  EncodeVoice(format, heard, said);
  Check(said.size() == taken, "sound that is sent is as long as it was");
  DleDecoder decoder;
  std::string back;
  const auto end = decoder.Push(ShieldSamples(said) + DleCommand(kEtx), back, [](char) {});
  Check(end && end->empty() && back == said, "shielded samples come through");
}

} // namespace

std::vector<std::string> Seeds() {
  using namespace std::string_literals;
  return {
      "\x03\r\nOK\r\n\r\nRING\r\n\r\nDATE = 1123\r\nTIME = 0915\r\nNMBR = 5551234\r\nNAME = M\xFCller\r\nRING A\r\n"s,
      "\x07\r\n802401083130313532303338020A38343735353530303031070C552E532E524F424F5449435334\r\n"s
      "800D0108313031353230333804015081\r\nFM:5551234 TO:5556789\r\nMESG = 110101\r\nDDN_NMBR=O\r\nCALLER NAME: P\r\n"s,
      "\x05+VSM: 1,\"UNSIGNED PCM\",8,0,(7200,8000),(0),(0)\r\n128,\"8-BIT LINEAR\",8,0,8000,0,0\r\n"s
      "131,\"G.711 U-LAW\",8,0,(7200-11025),0,0\r\n129,\"16 BIT SIGNED PCM\",16,0,8000,0,0\r\nOK\r\n"s
      "AT+VRX\r\r\nCONNECT 8000\r\nab\x10\x10xy\x10\x1A\x10q\x10\x03\r\nVCON\r\n"s,
      "\x09\x10R\x10X\r\nNMBR=5551234\r\nNAME=\xC2\x85\xE2\x80\xAEJane\r\n\x10.\x10s\x10/5~RI\x10hNG\r\nDRON=20\r\n"s
      "CONNECT\nzz\x10\x03OK\r\nNO CARRIER\r\nRINGING\r\nDELAYED 00:30\r\nBLACKLISTED\r\n"s,
  };
}

} // namespace kelmio::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmio::fuzz;
  Cuts cuts(ViewOf(data, size));
  Reader at_once;
  at_once.Read(cuts.Rest());
  Reader in_parts;
  while (!cuts.Empty())
    in_parts.Read(cuts.Part(24));
  Check(at_once.Told() == in_parts.Told() && at_once.Samples() == in_parts.Samples(),
        "where reads are cut makes no difference");
  CheckSound(at_once.Rows(), at_once.Samples());
  return 0;
}

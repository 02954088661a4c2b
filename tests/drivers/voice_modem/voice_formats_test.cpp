// The choice among what real chips offer, and samples there and back.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "drivers/voice_modem/voice_formats.h"

namespace kelmio {
namespace {

std::optional<VoiceFormat> Choose(const std::vector<std::string>& lines) {
  std::vector<VoiceFormatRow> rows;
  for (const std::string& line : lines) {
    if (const auto row = ReadVoiceFormatRow(line))
      rows.push_back(*row);
  }
  return ChooseVoiceFormat(rows);
}

TEST(VoiceFormatsTest, ChoosesByNameAndBitsWhateverTheNumber) {
  struct Case {
    std::vector<std::string> lines;
    int id; // -1: none
    VoiceCoding coding;
    bool is_signed;
  };
  const std::vector<Case> cases{
      {{"", "1,\"UNSIGNED PCM\",8,0,8000,0,0", "129,\"IMA ADPCM\",4,0,8000,0,0", "OK"}, 1, VoiceCoding::Linear8, false},
      {{"+VSM: 128,\"8-BIT LINEAR\",(8),(0),(7200,8000),(0),(0)"}, 128, VoiceCoding::Linear8, false},
      {{"129,\"16 BIT LINEAR\",16,0,(7200,8000,11025),(0-255),0", "130,\"G.711 A-LAW\",8,0,(7200-11025),0,0",
        "131,\"G.711 U-LAW\",8,0,8000,0,0", "133,\"G.729\",8,0,8000,0,0"},
       131,
       VoiceCoding::MuLaw,
       false},
      {{"5,\"ALAW\",8,0,8000", "129,\"SIGNED PCM\",16,0,8000,0,0"}, 5, VoiceCoding::ALaw, false},
      {{"0,\"SIGNED PCM\",16,0,8000,0,0"}, 0, VoiceCoding::Linear16, true},
      {{"128,\"SIGNED PCM\",8,0,8000,0,0", "4,\"G.711, u-law\",8,0,8000,0,0"}, 4, VoiceCoding::MuLaw, false},
      {{"128,\"SIGNED PCM\",12,0,8000,0,0", "132,\"ADPCM\",2,0,8000"}, -1, {}, false},
      {{"1,\"UNSIGNED PCM\",8,0,7200,0,0"}, -1, {}, false},
      {{"1,\"UNSIGNED PCM", "\"", ",,,,", "1,\",8,0,8000", "99999999999999,\"PCM\",8,0,8000"}, -1, {}, false},
  };
  for (const Case& one : cases) {
    const auto format = Choose(one.lines);
    ASSERT_EQ(format.has_value(), one.id >= 0) << one.lines[0];
    if (format) {
      EXPECT_EQ(format->id, one.id);
      EXPECT_EQ(format->coding, one.coding);
      EXPECT_EQ(format->is_signed, one.is_signed);
    }
  }
}

TEST(VoiceFormatsTest, EveryCodeComesBackAsItselfAndEverySampleNearby) {
  for (const VoiceFormat format :
       {VoiceFormat{0, VoiceCoding::Linear8, false}, VoiceFormat{0, VoiceCoding::Linear8, true},
        VoiceFormat{0, VoiceCoding::MuLaw, false}, VoiceFormat{0, VoiceCoding::ALaw, false},
        VoiceFormat{0, VoiceCoding::Linear16, false}, VoiceFormat{0, VoiceCoding::Linear16, true}}) {
    const bool linear16 = format.coding == VoiceCoding::Linear16;
    std::string codes;
    for (int code = 0; code < (linear16 ? 65536 : 256); ++code) {
      codes.push_back(static_cast<char>(code));
      if (linear16)
        codes.push_back(static_cast<char>(code >> 8));
    }
    std::vector<std::int16_t> samples;
    EXPECT_EQ(DecodeVoice(format, codes + (linear16 ? "x" : ""), samples), codes.size());
    std::string again;
    EncodeVoice(format, samples, again);
    if (format.coding == VoiceCoding::MuLaw)
      again[0x7F] = 0x7F; // the second zero
    EXPECT_EQ(again, codes) << static_cast<int>(format.coding);

    for (int sample = -32768; sample <= 32767; sample += 7) {
      const auto word = static_cast<std::int16_t>(sample);
      std::string bytes;
      EncodeVoice(format, {&word, 1}, bytes);
      std::vector<std::int16_t> back;
      DecodeVoice(format, bytes, back);
      ASSERT_EQ(back.size(), 1U);
      const bool companded = format.coding == VoiceCoding::MuLaw || format.coding == VoiceCoding::ALaw;
      const int allowed = linear16 ? 0 : companded ? std::abs(sample) / 31 + 10 : sample > 32511 ? 256 : 128;
      ASSERT_LE(std::abs(back[0] - sample), allowed) << sample << " in " << static_cast<int>(format.coding);
    }
  }
}

/// The ends and the step around zero as ITU-T G.711 tables them, in 16 bits.
TEST(VoiceFormatsTest, CompandsAsTheStandardTables) {
  std::vector<std::int16_t> samples;
  DecodeVoice({0, VoiceCoding::MuLaw, false}, std::string("\x00\x80\xFF", 3), samples);
  DecodeVoice({0, VoiceCoding::ALaw, false}, std::string("\xAA\x2A\xD5\x55", 4), samples);
  EXPECT_EQ(samples, (std::vector<std::int16_t>{-32124, 32124, 0, 32256, -32256, 8, -8}));
}

} // namespace
} // namespace kelmio

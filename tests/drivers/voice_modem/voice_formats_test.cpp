// The choice among what real chips offer, and samples there and back.
#include <gtest/gtest.h>

#include <cstdlib>
#include <tuple>

#include "drivers/voice_modem/voice_formats.h"

namespace kelmio {
namespace {

using enum VoiceCoding;
/// Its number, its coding, and whether it is signed.
using Choice = std::optional<std::tuple<int, VoiceCoding, bool>>;

Choice Choose(const std::vector<std::string>& lines) {
  std::vector<VoiceFormatRow> rows;
  for (const std::string& line : lines) {
    if (const auto row = ReadVoiceFormatRow(line))
      rows.push_back(*row);
  }
  const auto format = ChooseVoiceFormat(rows);
  return format ? Choice({format->id, format->coding, format->is_signed}) : std::nullopt;
}

TEST(VoiceFormatsTest, ChoosesByNameAndBitsWhateverTheNumber) {
  const std::vector<std::pair<std::vector<std::string>, Choice>> cases{
      {{"", "1,\"UNSIGNED PCM\",8,0,8000,0,0", "129,\"IMA ADPCM\",4,0,8000,0,0", "OK"}, {{1, Linear8, false}}},
      {{"+VSM: 128,\"8-BIT LINEAR\",(8),(0),(7200,8000),(0),(0)"}, {{128, Linear8, false}}},
      {{"129,\"16 BIT LINEAR\",16,0,(7200,8000,11025),(0-255),0", "130,\"G.711 A-LAW\",8,0,(7200-11025),0,0",
        "131,\"G.711 U-LAW\",8,0,8000,0,0", "133,\"G.729\",8,0,8000,0,0"},
       {{131, MuLaw, false}}},
      {{"5,\"ALAW\",8,0,8000", "129,\"SIGNED PCM\",16,0,8000,0,0"}, {{5, ALaw, false}}},
      {{"0,\"SIGNED PCM\",16,0,8000,0,0"}, {{0, Linear16, true}}},
      {{"128,\"SIGNED PCM\",8,0,8000,0,0", "4,\"G.711, u-law\",8,0,8000,0,0"}, {{4, MuLaw, false}}},
      {{"128,\"SIGNED PCM\",12,0,8000,0,0", "132,\"ADPCM\",2,0,8000"}, {}},
      {{"1,\"UNSIGNED PCM\",8,0,7200,0,0"}, {}},
      {{"1,\"UNSIGNED PCM", "\"", ",,,,", "1,\",8,0,8000", "99999999999999,\"PCM\",8,0,8000"}, {}},
  };
  for (const auto& [lines, choice] : cases)
    EXPECT_EQ(Choose(lines), choice) << lines[0];
}

TEST(VoiceFormatsTest, EverySampleComesBackNearby) {
  for (const VoiceFormat format :
       {VoiceFormat{0, Linear8, false}, VoiceFormat{0, Linear8, true}, VoiceFormat{0, MuLaw, false},
        VoiceFormat{0, ALaw, false}, VoiceFormat{0, Linear16, false}, VoiceFormat{0, Linear16, true}}) {
    for (int sample = -32768; sample <= 32767; sample += 7) {
      const auto word = static_cast<std::int16_t>(sample);
      std::string bytes;
      EncodeVoice(format, {&word, 1}, bytes);
      std::vector<std::int16_t> back;
      DecodeVoice(format, bytes, back);
      ASSERT_EQ(back.size(), 1U);
      const bool companded = format.coding == MuLaw || format.coding == ALaw;
      const int allowed = format.coding == Linear16 ? 0
                          : companded               ? std::abs(sample) / 31 + 10
                          : sample > 32511          ? 256
                                                    : 128;
      ASSERT_LE(std::abs(back[0] - sample), allowed) << sample << " in " << static_cast<int>(format.coding);
    }
  }
}

/// The ends and the step around zero as ITU-T G.711 tables them, in 16 bits.
TEST(VoiceFormatsTest, CompandsAsTheStandardTables) {
  std::vector<std::int16_t> samples;
  DecodeVoice({0, MuLaw, false}, std::string("\x00\x80\xFF", 3), samples);
  DecodeVoice({0, ALaw, false}, std::string("\xAA\x2A\xD5\x55", 4), samples);
  EXPECT_EQ(samples, (std::vector<std::int16_t>{-32124, 32124, 0, 32256, -32256, 8, -8}));
}

} // namespace
} // namespace kelmio

#include <filesystem>
#include <fstream>

#include "media/full_disk.h"
#include "media/recording_format.h"
#include "media/sound_desk.h"

namespace kelmio {
namespace {

using namespace test;

class WaveFile : public ::testing::Test {
protected:
  std::unique_ptr<WaveWriter> Create(const WaveFormatRecord& format) {
    std::string error;
    auto writer = WaveWriter::Create(path_, format, error);
    EXPECT_TRUE(writer) << error;
    return writer;
  }

  TemporaryFolder folder_;
  const std::string path_ = folder_.Path() + "message.wav";
};

double LeastFidelity(const WaveFormatRecord& format) {
  switch (format.format_tag) {
  case wave_format_tag::kPcm:
    return format.bits_per_sample == 16 ? 90 : 28;
  case wave_format_tag::kImaAdpcm:
    return 15;
  case wave_format_tag::kGsm610:
    return 5;
  default:
    return 30;
  }
}

// The sizes that the header of a wave file claims.
struct Claims {
  std::uint32_t riff = 0;
  std::uint32_t samples = 0; // of the fact chunk
  std::uint32_t data = 0;
  std::uint32_t data_start = 0;
};

Claims ReadClaims(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const auto word = [&file](std::uint32_t place) {
    std::uint32_t value = 0;
    file.seekg(place);
    for (unsigned shift = 0; shift < 32; shift += 8)
      value |= static_cast<std::uint32_t>(file.get() & 0xFF) << shift;
    return value;
  };
  Claims claims{word(4)};
  for (std::uint32_t place = 12; file && claims.data_start == 0; place += 8 + word(place + 4)) {
    if (word(place) == 0x74636166) // "fact"
      claims.samples = word(place + 8);
    if (word(place) == 0x61746164) // "data"
      claims.data = word(place + 4), claims.data_start = place + 8;
  }
  return claims;
}

TEST_F(WaveFile, EachFormatKeepsTheSoundAndATrueHeaderOnTheWay) {
  for (const WaveFormatRecord& format : RecordableFormats()) {
    SCOPED_TRACE(::testing::Message() << "tag " << format.format_tag << ", " << format.bits_per_sample << " bits, "
                                      << format.samples_per_second << " Hz, " << format.channels << " channels");
    ASSERT_TRUE(IsRecordable(format));
    const int rate = static_cast<int>(format.samples_per_second);
    const Samples sound = Sines({300, 500}, -16, 1.5, rate);
    const auto writer = Create(format);
    ASSERT_TRUE(writer);
    const auto second = static_cast<std::size_t>(rate);
    ASSERT_TRUE(writer->Write(std::span(sound).first(second)));
    ASSERT_TRUE(writer->UpdateHeader());

    // What a crash would leave: the file as it is now.
    const std::string left = folder_.Path() + "left.wav";
    std::filesystem::copy_file(path_, left, std::filesystem::copy_options::overwrite_existing);
    int left_rate = 0;
    const Samples kept = ReadAll(left, &left_rate);
    EXPECT_EQ(left_rate, rate);
    EXPECT_GT(kept.size(), second * 85 / 100) << "less than one block is held back";
    EXPECT_GT(SignalToNoise(std::span(sound).first(std::min(kept.size(), second)), kept), LeastFidelity(format));
    EXPECT_NEAR(static_cast<double>(WaveLength(left).value_or(0)), 1000, 150);

    ASSERT_TRUE(writer->Write(std::span(sound).subspan(second)));
    ASSERT_TRUE(writer->Finish());
    const Samples whole = ReadAll(path_);
    EXPECT_GE(whole.size(), sound.size());
    EXPECT_LT(whole.size(), sound.size() + 4200) << "no more than the filling of a last block";
    EXPECT_GT(SignalToNoise(sound, whole), LeastFidelity(format));
    if (format.format_tag != wave_format_tag::kPcm) {
      EXPECT_EQ(ReadClaims(path_).samples, sound.size());
    }
  }
}

TEST_F(WaveFile, AFullDiskLeavesWholeBlocksAndATrueHeader) {
  for (const WaveFormatRecord& format : RecordableFormats()) {
    if (format.samples_per_second != 8000)
      continue;
    SCOPED_TRACE(::testing::Message() << "tag " << format.format_tag << ", " << format.channels << " channels");
    const Samples sound = Sines({300, 500}, -16, 20);
    const auto writer = Create(format);
    ASSERT_TRUE(writer);
    {
      const FullDisk disk(20001);
      std::size_t written = 0;
      while (written + 1000 <= sound.size() && writer->Write(std::span(sound).subspan(written, 1000)))
        written += 1000;
      EXPECT_LT(written + 1000, sound.size());
      EXPECT_FALSE(writer->Write(sound)) << "once refused, nothing more is taken";
      EXPECT_FALSE(writer->Finish());
      EXPECT_FALSE(writer->Error().empty());
    }
    const auto size = static_cast<std::uint32_t>(std::filesystem::file_size(path_));
    const Claims claims = ReadClaims(path_);
    EXPECT_EQ(claims.riff, size - 8);
    EXPECT_EQ(claims.data, size - claims.data_start);
    EXPECT_GT(size, 19000U);
    const Samples kept = ReadAll(path_);
    EXPECT_GT(SignalToNoise(std::span(sound).first(kept.size()), kept), LeastFidelity(format));
    if (format.format_tag != wave_format_tag::kPcm) {
      EXPECT_EQ(claims.samples, std::min(kept.size(), sound.size()));
    }
  }
}

TEST_F(WaveFile, AFormatThatContradictsItselfCannotBeRecorded) {
  const WaveFormatRecord good{};
  EXPECT_TRUE(IsRecordable(good));
  const auto wrong = [&good](auto&& change) {
    WaveFormatRecord format = good;
    change(format);
    return !IsRecordable(format);
  };
  EXPECT_TRUE(wrong([](auto& f) { f.format_tag = 85; }));
  EXPECT_TRUE(wrong([](auto& f) { f.channels = 0; }));
  EXPECT_TRUE(wrong([](auto& f) { f.channels = 2; }));
  EXPECT_TRUE(wrong([](auto& f) { f.samples_per_second = 0; }));
  EXPECT_TRUE(wrong([](auto& f) { f.average_bytes_per_second = 8000; }));
  EXPECT_TRUE(wrong([](auto& f) { f.block_align = 0; }));
  EXPECT_TRUE(wrong([](auto& f) { f.bits_per_sample = 24, f.block_align = 3, f.average_bytes_per_second = 24000; }));
  // As other programs describe them.
  EXPECT_TRUE(IsRecordable({wave_format_tag::kImaAdpcm, 1, 8000, 4055, 256, 4, 2}));
  EXPECT_TRUE(IsRecordable({wave_format_tag::kImaAdpcm, 1, 44100, 22125, 1024, 4, 2}));
  EXPECT_FALSE(IsRecordable({wave_format_tag::kImaAdpcm, 1, 8000, 4055, 0, 4, 2}));
  EXPECT_FALSE(IsRecordable({wave_format_tag::kImaAdpcm, 1, 8000, 4055, 4, 4, 2}));
  EXPECT_TRUE(IsRecordable({wave_format_tag::kGsm610, 1, 8000, 1625, 65, 0, 2}));
  EXPECT_TRUE(IsRecordable({wave_format_tag::kGsm610, 1, 44100, 8958, 65, 0, 2}));
  EXPECT_FALSE(IsRecordable({wave_format_tag::kGsm610, 2, 8000, 3250, 130, 0, 2}));
}

} // namespace
} // namespace kelmio

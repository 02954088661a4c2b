#include "media/pulse/pulse_wave_image_player.h"

#include <iostream>
#include <string>

#include "sound_server.h"

namespace kelmio::test {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kRate = 8000;

class WaveImage {
public:
  WaveImage(const std::vector<std::uint8_t>& data, std::uint32_t channels, std::uint32_t bits, std::uint32_t code = 1) {
    Add("RIFF").Add(36 + static_cast<std::uint32_t>(data.size()), 4).Add("WAVEfmt ").Add(16, 4);
    Add(code, 2).Add(channels, 2).Add(kRate, 4).Add(kRate * channels * bits / 8, 4).Add(channels * bits / 8, 2);
    Add(bits, 2).Add("data").Add(static_cast<std::uint32_t>(data.size()), 4);
    for (const std::uint8_t byte : data)
      Add(byte, 1);
  }
  std::span<const std::byte> Bytes() const { return bytes_; }

private:
  WaveImage& Add(const std::string& word) {
    for (const char letter : word)
      bytes_.push_back(static_cast<std::byte>(letter));
    return *this;
  }
  WaveImage& Add(std::uint32_t number, int size) {
    for (int i = 0; i < size; ++i)
      bytes_.push_back(static_cast<std::byte>(number >> 8 * i));
    return *this;
  }

  std::vector<std::byte> bytes_;
};

std::vector<std::uint8_t> Data(const Samples& samples, int copies) {
  std::vector<std::uint8_t> data;
  for (const std::int16_t sample : samples)
    for (int i = 0; i < copies; ++i) {
      data.push_back(static_cast<std::uint8_t>(sample & 0xFF));
      data.push_back(static_cast<std::uint8_t>(sample >> 8 & 0xFF));
    }
  return data;
}

class ShortSoundTest : public SoundServerTest {
protected:
  PulseWaveImagePlayer player_;
};

TEST_F(ShortSoundTest, PlaysEachFormatToItsEndBeforeItReturns) {
  ASSERT_TRUE(server_.Start({SoundServer::Loudspeaker(server_.Pipe(), kRate)}));
  Listener listener(server_.Pipe());
  const Samples sound = NoiseWithoutZeros(kRate / 4);
  std::vector<std::uint8_t> bytes;
  Samples coarse;
  for (const std::int16_t sample : sound) {
    const int level = sample / 256 == 0 ? 1 : sample / 256;
    bytes.push_back(static_cast<std::uint8_t>(level + 128));
    coarse.push_back(static_cast<std::int16_t>(level * 256));
  }
  Samples expected;
  struct Case {
    WaveImage image;
    Samples heard;
  };
  for (const Case& sound_case : {Case{WaveImage(Data(sound, 1), 1, 16), sound},
                                 Case{WaveImage(Data(sound, 2), 2, 16), sound}, Case{WaveImage(bytes, 1, 8), coarse}}) {
    const auto time = TimeOf([&] { EXPECT_TRUE(player_.Play(sound_case.image.Bytes())); });
    EXPECT_GE(time, 240ms);
    EXPECT_LT(time, 5s);
    std::cout << "250 ms of sound took " << time.count() << " ms\n";
    expected.insert(expected.end(), sound_case.heard.begin(), sound_case.heard.end());
    EXPECT_TRUE(RunUntil([&] { return listener.Heard().size() >= expected.size(); }));
    EXPECT_TRUE(listener.Heard() == expected) << listener.Heard().size();
  }
  const WaveImage whole(Data(sound, 1), 1, 16);
  for (const std::size_t size : {0U, 11U, 20U, 43U, 44U})
    EXPECT_FALSE(player_.Play(whole.Bytes().first(size))) << size;
  EXPECT_FALSE(player_.Play(WaveImage(Data(sound, 1), 1, 16, 6).Bytes())) << "A-law";
  EXPECT_FALSE(player_.Play(WaveImage(Data(sound, 1), 0, 16).Bytes())) << "no channel";
}

TEST_F(ShortSoundTest, DoesNotWaitWhereNobodyPlays) {
  const WaveImage image(Data(NoiseWithoutZeros(kRate * 60), 1), 1, 16);
  bool played = true;
  EXPECT_LT(TimeOf([&] { played = player_.Play(image.Bytes()); }), 1s);
  EXPECT_FALSE(played);
  ASSERT_NO_FATAL_FAILURE(server_.Hang());
  EXPECT_LT(TimeOf([&] { played = player_.Play(image.Bytes()); }), 10s);
  EXPECT_FALSE(played);
}

} // namespace
} // namespace kelmio::test

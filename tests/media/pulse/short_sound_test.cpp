#include "media/pulse/pulse_wave_image_player.h"

#include <iostream>
#include <string>

#include "sound_server.h"

namespace kelmio::test {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kRate = 8000;

/// A wave image of 16 bits.
std::vector<std::byte> WaveImage(const Samples& samples, std::uint32_t channels, std::uint32_t code = 1) {
  std::vector<std::byte> image;
  const auto add = [&image](const std::string& word) {
    for (const char letter : word)
      image.push_back(static_cast<std::byte>(letter));
  };
  const auto add_number = [&image](std::uint32_t number, int size) {
    for (int i = 0; i < size; ++i)
      image.push_back(static_cast<std::byte>(number >> 8 * i));
  };
  const auto size = static_cast<std::uint32_t>(samples.size()) * channels * 2;
  add("RIFF");
  add_number(36 + size, 4);
  add("WAVEfmt ");
  add_number(16, 4);
  add_number(code, 2);
  add_number(channels, 2);
  add_number(kRate, 4);
  add_number(kRate * channels * 2, 4);
  add_number(channels * 2, 2);
  add_number(16, 2);
  add("data");
  add_number(size, 4);
  for (const std::int16_t sample : samples)
    for (std::uint32_t i = 0; i < channels; ++i)
      add_number(static_cast<std::uint16_t>(sample), 2);
  return image;
}

class ShortSoundTest : public SoundServerTest {
protected:
  PulseWaveImagePlayer player_;
};

TEST_F(ShortSoundTest, PlaysToTheEndBeforeItReturns) {
  ASSERT_TRUE(server_.Start({SoundServer::Loudspeaker(server_.Pipe(), kRate)}));
  Listener listener(server_.Pipe());
  const Samples sound = NoiseWithoutZeros(kRate / 4);
  const auto whole = WaveImage(sound, 2);
  const auto time = TimeOf([&] { EXPECT_TRUE(player_.Play(whole)); });
  EXPECT_GE(time, 240ms);
  EXPECT_LT(time, 5s);
  std::cout << "250 ms of sound took " << time.count() << " ms\n";
  EXPECT_TRUE(RunUntil([&] { return listener.Heard().size() >= sound.size(); }));
  EXPECT_TRUE(listener.Heard() == sound) << listener.Heard().size();

  for (const std::size_t size : {0U, 11U, 20U, 43U, 44U})
    EXPECT_FALSE(player_.Play(std::span(whole).first(size))) << size;
  EXPECT_FALSE(player_.Play(WaveImage(sound, 1, 6))) << "A-law";
  EXPECT_FALSE(player_.Play(WaveImage(sound, 0))) << "no channel";
}

TEST_F(ShortSoundTest, DoesNotWaitWhereNobodyPlays) {
  const auto image = WaveImage(NoiseWithoutZeros(kRate * 60), 1);
  bool played = true;
  EXPECT_LT(TimeOf([&] { played = player_.Play(image); }), 1s);
  EXPECT_FALSE(played);
  ASSERT_NO_FATAL_FAILURE(server_.Hang());
  EXPECT_LT(TimeOf([&] { played = player_.Play(image); }), 10s);
  EXPECT_FALSE(played);
}

} // namespace
} // namespace kelmio::test

#include "media/pulse/pulse_sound_output.h"

#include <algorithm>
#include <memory>
#include <string>
#include <thread>

#include "media/wave_file.h"
#include "sound_server.h"

namespace kelmio::test {
namespace {

using namespace std::chrono_literals;

constexpr int kRate = 8000;
/// How far the place that is told may lie from what was heard.
constexpr std::size_t kLag = kRate / 4;

class SoundOutputTest : public SoundServerTest {
protected:
  SoundOutputTest() {
    output_.Lost = [this] { ++lost_; };
  }
  void StartServer() {
    ASSERT_TRUE(server_.Start({SoundServer::Loudspeaker(server_.Pipe(), kRate)}));
    listener_ = std::make_unique<Listener>(server_.Pipe());
  }
  std::unique_ptr<WaveReader> Sound(const Samples& samples) {
    const std::string path = folder_.Path() + "message.wav";
    std::string error;
    WaveWriter::Create(path, {}, error)->Write(samples);
    return WaveReader::Open(path, error);
  }
  bool HearsUntil(const Samples& samples) {
    return RunUntil([&] { return listener_->Heard().size() >= samples.size(); }) && listener_->Heard() == samples;
  }
  std::size_t HeardSamples() const { return static_cast<std::size_t>(output_.Heard()) * kRate / 1000; }

  TemporaryFolder folder_;
  std::unique_ptr<Listener> listener_;
  PulseSoundOutput output_{server_.loop};
  int lost_ = 0;
};

TEST_F(SoundOutputTest, IsSilentFromTheStopAndTellsThePlace) {
  StartServer();
  const Samples sound = NoiseWithoutZeros(kRate * 10);
  ASSERT_TRUE(output_.Start(Sound(sound)));
  ASSERT_TRUE(RunUntil([this] { return output_.Heard() >= 1000; }));
  const std::size_t stopped = HeardSamples();
  output_.Stop();
  EXPECT_EQ(output_.Heard(), 0);
  server_.loop.RunFor(700ms); // more than the server held beforehand
  const Samples heard = listener_->Heard();
  ASSERT_LT(heard.size(), sound.size());
  EXPECT_TRUE(std::equal(heard.begin(), heard.end(), sound.begin()));
  EXPECT_NEAR(static_cast<double>(heard.size()), static_cast<double>(stopped), kLag);
}

TEST_F(SoundOutputTest, PlaysToTheEndThoughTheUserInterfaceIsBusyAndRunsOn) {
  StartServer();
  const Samples sound = NoiseWithoutZeros(kRate * 2);
  ASSERT_TRUE(output_.Start(Sound(sound)));
  std::this_thread::sleep_for(2500ms);
  EXPECT_TRUE(HearsUntil(sound)) << listener_->Heard().size();
  EXPECT_TRUE(RunUntil([this] { return output_.Heard() > 2500; })); // beyond the end
  EXPECT_EQ(lost_, 0);
}

TEST_F(SoundOutputTest, TellsOnceThatTheDeviceIsLostAndStandsStill) {
  StartServer();
  ASSERT_TRUE(output_.Start(Sound(NoiseWithoutZeros(kRate * 60))));
  ASSERT_TRUE(RunUntil([this] { return output_.Heard() >= 200; }));
  server_.Kill();
  ASSERT_TRUE(RunUntil([this] { return lost_ > 0; }));
  const long heard = output_.Heard();
  server_.loop.RunFor(100ms);
  EXPECT_EQ(output_.Heard(), heard);
  EXPECT_EQ(lost_, 1);
  EXPECT_FALSE(output_.Start(Sound(NoiseWithoutZeros(kRate))));
}

TEST_F(SoundOutputTest, FindsAServerThatComesLater) {
  const Samples sound = NoiseWithoutZeros(kRate / 2);
  EXPECT_FALSE(output_.Start(Sound(sound)));
  EXPECT_TRUE(RunUntil([this] { return output_.Heard() > 600; })); // on a clock
  ASSERT_TRUE(server_.Start({}));
  EXPECT_FALSE(output_.Start(Sound(sound))) << "a server without a device";
  server_.Kill();
  StartServer();
  EXPECT_TRUE(output_.Start(Sound(sound)));
  EXPECT_TRUE(HearsUntil(sound));
  EXPECT_EQ(lost_, 0);
}

TEST_F(SoundOutputTest, RunsOnAClockWhileTheServerHangsAndJoinsItWhenItAnswers) {
  StartServer();
  server_.Signal(SIGSTOP); // the kernel still accepts for it
  const Samples sound = NoiseWithoutZeros(kRate * 5);
  EXPECT_LT(TimeOf([&] { EXPECT_FALSE(output_.Start(Sound(sound))); }), 2s);
  EXPECT_TRUE(RunUntil([this] { return output_.Heard() > 500; }));
  // It is known to hang by now: no wait for it.
  EXPECT_FALSE(output_.Start(Sound(sound)));
  EXPECT_LT(output_.Heard(), 250);
  ASSERT_TRUE(RunUntil([this] { return output_.Heard() > 1000; }));
  server_.Signal(SIGCONT);
  const std::size_t latest = HeardSamples() + kRate * 2;
  ASSERT_TRUE(RunUntil([this] { return listener_->Heard().size() > kRate; }));
  const Samples heard = listener_->Heard();
  const auto place = std::search(sound.begin(), sound.end(), heard.begin(), heard.begin() + kRate / 2);
  ASSERT_NE(place, sound.end());
  EXPECT_GE(place - sound.begin(), kRate);
  EXPECT_LT(place - sound.begin(), static_cast<std::ptrdiff_t>(latest));
  EXPECT_EQ(lost_, 0);
}

} // namespace
} // namespace kelmio::test

#include "qt/qt_sound_output.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "media/wave_device.h"
#include "media/wave_file.h"
#include "qt/qt_event_loop.h"
#include "sound_server.h"
#include "test_form.h"

namespace kelmio {
namespace {

using namespace test;
using Samples = std::vector<std::int16_t>;

constexpr std::size_t kRate = 8000;
/// How far the place that is told may lie from what was heard.
constexpr std::size_t kLag = kRate / 4;

Samples NoiseWithoutZeros(double seconds) {
  Samples samples(static_cast<std::size_t>(seconds * kRate));
  std::uint32_t state = 1;
  for (std::int16_t& sample : samples) {
    state = state * 1664525U + 1013904223U; // the generator of "Numerical Recipes"
    const auto value = static_cast<std::int16_t>(state >> 18);
    sample = value == 0 ? std::int16_t{1} : value;
  }
  return samples;
}

Samples From(const Samples& samples, std::size_t start) {
  return {samples.begin() + static_cast<std::ptrdiff_t>(start), samples.end()};
}

Samples ReadAll(const std::string& path) {
  std::string error;
  const auto reader = WaveReader::Open(path, error);
  Samples all(static_cast<std::size_t>(reader->Left()));
  all.resize(reader->Read(all));
  return all;
}

class SoundOutputTest : public ::testing::Test {
protected:
  SoundOutputTest() {
    device_.SetFileName(path_);
    device_.SetUpdateInterval(20);
    device_.StatusUpdate = [this] { ++updates_; };
    device_.Trouble = [this](const std::string& sentence) { troubles_.push_back(sentence); };
  }
  static void SetUpTestSuite() {
    server_ = std::make_unique<SoundServer>();
    qputenv("PULSE_SERVER", server_->Address().toUtf8()); // before the first sound: it is read once
  }
  static void TearDownTestSuite() { server_.reset(); }

  // The test is skipped where there is no such server.
  void StartServer() {
    if (!SoundServer::Installed())
      GTEST_SKIP() << "PulseAudio is not installed";
    if (!server_->Runs())
      server_->Start();
    ASSERT_TRUE(WaitFor([] { return server_->Listens(); }));
    listener_ = std::make_unique<Listener>(*server_);
  }
  void Open(const Samples& sound, const WaveFormatRecord& format = {}) {
    std::string error;
    WaveWriter::Create(path_, format, error)->Write(sound);
    device_.Command("Open");
  }
  bool AtEnd() {
    return WaitFor([this] { return device_.Position() == device_.Length(); });
  }
  // All that was heard once there is at least so much.
  Samples Heard(std::size_t count) {
    WaitFor([&] { return listener_->Heard().size() >= count; });
    return listener_->Heard();
  }

  static inline std::unique_ptr<SoundServer> server_;
  TemporaryFolder folder_;
  const std::string path_ = folder_.Path() + "message.wav";
  std::unique_ptr<Listener> listener_;
  QtTimerService timers_;
  QtSoundOutput output_;
  std::vector<std::string> troubles_;
  int updates_ = 0;
  WaveDevice device_{timers_, output_};
};

TEST_F(SoundOutputTest, PlaysTheFileFromTheChosenPlaceToItsEnd) {
  ASSERT_NO_FATAL_FAILURE(StartServer());
  if (IsSkipped())
    return;
  const Samples sound = NoiseWithoutZeros(1.5);
  Open(sound);
  device_.SetFrom(500);
  device_.Command("Play");
  EXPECT_TRUE(AtEnd());
  EXPECT_TRUE(Heard(kRate) == From(sound, kRate / 2)) << listener_->Heard().size();
  device_.SetFrom(1400); // less than the device takes beforehand
  device_.Command("Play");
  EXPECT_TRUE(AtEnd());
  EXPECT_TRUE(From(Heard(kRate + kRate / 10), kRate) == From(sound, kRate * 14 / 10));
  EXPECT_THAT(troubles_, testing::IsEmpty());
}

TEST_F(SoundOutputTest, PlaysWhatTheRecorderPacks) {
  ASSERT_NO_FATAL_FAILURE(StartServer());
  if (IsSkipped())
    return;
  Samples expected;
  for (const WaveFormatRecord& format : {WaveFormatRecord{wave_format_tag::kImaAdpcm, 1, 8000, 4055, 256, 4, 2},
                                         WaveFormatRecord{wave_format_tag::kGsm610, 1, 8000, 1625, 65, 0, 2}}) {
    Open(NoiseWithoutZeros(0.7), format);
    Samples sound = ReadAll(path_);
    std::erase(sound, std::int16_t{0});
    expected.insert(expected.end(), sound.begin(), sound.end());
    device_.Command("Play");
    EXPECT_TRUE(AtEnd());
    EXPECT_TRUE(Heard(expected.size()) == expected);
  }
}

TEST_F(SoundOutputTest, GoesOnAfterAStopAndFromASeek) {
  ASSERT_NO_FATAL_FAILURE(StartServer());
  if (IsSkipped())
    return;
  const Samples sound = NoiseWithoutZeros(4);
  Open(sound);
  device_.Command("Play");
  ASSERT_TRUE(WaitFor([this] { return device_.Position() >= 1000; }));
  device_.Command("Stop");
  const auto stopped = static_cast<std::size_t>(device_.Position()) * kRate / 1000;
  EXPECT_LT(stopped, 2 * kRate);
  device_.Command("Play");
  ASSERT_TRUE(WaitFor([this] { return device_.Position() >= 2000; }));
  device_.SetFrom(3500);
  device_.Command("play");
  EXPECT_TRUE(AtEnd());

  // Three pieces: to the stop, from the stop to the seek, from the seek to the end.
  const Samples last = From(sound, kRate * 35 / 10);
  ASSERT_TRUE(WaitFor([&] {
    const Samples heard = listener_->Heard();
    return heard.size() > last.size() && From(heard, heard.size() - last.size()) == last;
  }));
  Samples heard = listener_->Heard();
  heard.resize(heard.size() - last.size());
  std::size_t first = 0;
  while (first < heard.size() && heard[first] == sound[first])
    ++first;
  EXPECT_NEAR(static_cast<double>(first), static_cast<double>(stopped), kLag);
  const Samples second = From(heard, first);
  EXPECT_NEAR(static_cast<double>(second.size() + stopped), 2.0 * kRate, kLag);
  EXPECT_TRUE(second == Samples(sound.begin() + static_cast<std::ptrdiff_t>(stopped),
                                sound.begin() + static_cast<std::ptrdiff_t>(stopped + second.size())));
}

TEST_F(SoundOutputTest, StopsWhereTheDeviceIsLostAndPlaysOnUnheard) {
  ASSERT_NO_FATAL_FAILURE(StartServer());
  if (IsSkipped())
    return;
  Open(NoiseWithoutZeros(60));
  device_.Command("Play");
  ASSERT_TRUE(WaitFor([this] { return device_.Position() >= 200; }));
  server_->Kill();
  ASSERT_TRUE(WaitFor([this] { return !troubles_.empty(); }));
  const long lost = device_.Position();
  EXPECT_GE(lost, 200);
  updates_ = 0;
  ASSERT_TRUE(WaitFor([this] { return updates_ >= 3; }));
  EXPECT_EQ(device_.Position(), lost);

  device_.Command("Play");
  EXPECT_TRUE(WaitFor([&] { return device_.Position() > lost + 50; }));
  EXPECT_EQ(troubles_.size(), 2U);
}

// The last one: the toolkit looks for the server once in a process.
TEST_F(SoundOutputTest, RunsOnAClockWithoutASoundDevice) {
  Open(NoiseWithoutZeros(0.3));
  device_.Command("Play");
  EXPECT_LT(device_.Position(), device_.Length());
  EXPECT_EQ(troubles_.size(), 1U);
  EXPECT_TRUE(AtEnd());
  EXPECT_GT(updates_, 3);
  device_.Command("Stop");
  EXPECT_EQ(device_.Position(), device_.Length());
}

} // namespace
} // namespace kelmio

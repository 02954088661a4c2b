#include "media/wave_device.h"

#include <gmock/gmock.h>

#include <fstream>

#include "fakes/fake_sound_output.h"
#include "media/recording_format.h"
#include "media/sound_desk.h"

namespace kelmio {
namespace {

using namespace test;

// A file of a second and some more is open.
class WaveDeviceTest : public ::testing::Test {
protected:
  WaveDeviceTest() {
    device_.Trouble = [this](const std::string& sentence) { troubles_.push_back(sentence); };
    device_.StatusUpdate = [this] { ++updates_; };
    Write({}, sound_);
    device_.SetFileName(path_);
    device_.Command("OPEN");
  }
  void Write(const WaveFormatRecord& format, const Samples& sound) {
    std::string error;
    const auto writer = WaveWriter::Create(path_, format, error);
    ASSERT_TRUE(writer) << error;
    ASSERT_TRUE(sound.empty() || writer->Write(sound));
  }
  Samples Played() {
    Samples all(100000);
    all.resize(output_.sound ? output_.sound->Read(all) : 0);
    return all;
  }

  TemporaryFolder folder_;
  const std::string path_ = folder_.Path() + "message.wav";
  const Samples sound_ = Speech(-16, 1.2345);
  FakeLoop loop_;
  FakeSoundOutput output_;
  std::vector<std::string> troubles_;
  int updates_ = 0;
  WaveDevice device_{loop_, output_};
};

TEST_F(WaveDeviceTest, TellsTheLengthOfTheOpenFile) {
  EXPECT_EQ(device_.Length(), 1234);
  device_.Command("stop");
  device_.Command("Polish");
  EXPECT_EQ(device_.Length(), 1234);
  device_.Command("Close");
  EXPECT_EQ(device_.Length(), 0);
  EXPECT_EQ(output_.starts, 0) << "measuring touches no sound device";
  EXPECT_TRUE(troubles_.empty());

  std::ofstream(path_) << "RIFF";
  device_.Command("Open");
  device_.Command("Play");
  EXPECT_EQ(device_.Length(), 0);
  EXPECT_EQ(output_.starts, 0);
  EXPECT_EQ(troubles_.size(), 1U);
}

TEST_F(WaveDeviceTest, PlaysFromWhereItIsToldAndGoesOnFromWhereItStopped) {
  device_.SetFrom(500);
  device_.Command("play");
  EXPECT_EQ(Played(), Samples(sound_.begin() + 4000, sound_.end()));
  output_.heard = 300;
  EXPECT_EQ(device_.Position(), 800);
  device_.Command("Stop");
  EXPECT_EQ(output_.sound, nullptr);
  EXPECT_EQ(device_.Position(), 800);
  device_.Command("Play");
  EXPECT_EQ(Played(), Samples(sound_.begin() + 6400, sound_.end()));
  device_.SetFrom(0); // a seek while it plays
  device_.Command("Play");
  EXPECT_EQ(Played(), sound_);
  device_.Command("Close");
  EXPECT_EQ(output_.sound, nullptr);
  EXPECT_EQ(device_.Position(), 0);
  device_.Command("Play");
  EXPECT_EQ(output_.starts, 3) << "nothing is open";
}

TEST_F(WaveDeviceTest, RestsAtTheEnd) {
  device_.Command("Play");
  output_.heard = 5000;
  EXPECT_EQ(device_.Position(), 1234);
  device_.SetFrom(99999);
  device_.Command("Play");
  EXPECT_EQ(output_.starts, 1);
  EXPECT_EQ(output_.sound, nullptr);
  EXPECT_EQ(device_.Position(), 1234);

  Write({}, {});
  device_.Command("Open");
  device_.Command("Play");
  EXPECT_EQ(device_.Length(), 0);
  EXPECT_EQ(output_.starts, 1) << "there is no sound in the file";
  EXPECT_TRUE(troubles_.empty());
}

TEST_F(WaveDeviceTest, TellsItsStatusWhileAFileIsOpen) {
  const auto updates = [this] {
    updates_ = 0;
    loop_.Advance(std::chrono::milliseconds(100));
    return updates_;
  };
  EXPECT_EQ(updates(), 0);
  device_.SetUpdateInterval(20);
  EXPECT_EQ(updates(), 5);
  device_.SetUpdateInterval(50);
  EXPECT_EQ(updates(), 2);
  device_.StatusUpdate = [this] {
    ++updates_;
    device_.Command("Close");
  };
  EXPECT_EQ(updates(), 1);
  device_.Command("Open");
  EXPECT_EQ(updates(), 1);
}

TEST_F(WaveDeviceTest, SaysOnceThatNothingCanBeHeardAndPlaysOn) {
  output_.present = false;
  device_.Command("Play");
  device_.Command("Play");
  EXPECT_EQ(troubles_.size(), 1U);
  output_.heard = 100;
  EXPECT_EQ(device_.Position(), 100);
}

TEST_F(WaveDeviceTest, ALostOutputStopsTheSoundWhereItWas) {
  output_.Lost();
  EXPECT_TRUE(troubles_.empty()) << "nothing played";
  device_.Command("Play");
  output_.heard = 100;
  output_.Lost();
  EXPECT_EQ(troubles_.size(), 1U);
  EXPECT_EQ(output_.sound, nullptr);
  output_.heard = 200;
  EXPECT_EQ(device_.Position(), 100);
  EXPECT_EQ(device_.Length(), 1234) << "the file stays open";
}

TEST_F(WaveDeviceTest, FindsEveryPlaceInEveryFormat) {
  for (const WaveFormatRecord& format : RecordableFormats()) {
    SCOPED_TRACE(::testing::Message() << "tag " << format.format_tag << ", " << format.bits_per_sample << " bits, "
                                      << format.samples_per_second << " Hz, " << format.channels << " channels");
    Write(format, Speech(-16, 2));
    const Samples whole = ReadAll(path_);
    device_.Command("Open");
    for (const long from : {1L, 301L, 100L}) {
      device_.SetFrom(from);
      device_.Command("Play");
      ASSERT_TRUE(output_.sound);
      const auto start = from * static_cast<long>(format.samples_per_second) / 1000;
      EXPECT_EQ(output_.sound->Left(), static_cast<long>(whole.size()) - start);
      EXPECT_TRUE(Played() == Samples(whole.begin() + start, whole.end())) << "from " << from;
      EXPECT_EQ(output_.sound->Left(), 0);
    }
  }
  EXPECT_TRUE(troubles_.empty());
}

} // namespace
} // namespace kelmio

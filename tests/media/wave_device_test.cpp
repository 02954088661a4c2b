#include "media/wave_device.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "fakes/fake_sound_input.h"
#include "fakes/fake_sound_output.h"
#include "media/full_disk.h"
#include "media/recording_format.h"
#include "media/sound_desk.h"

namespace kelmio {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A file of a second and some more is open.
class WaveDeviceTest : public ::testing::Test {
protected:
  WaveDeviceTest() {
    device_.Trouble = [this](const std::string& sentence) { troubles_.push_back(sentence); };
    device_.StatusUpdate = [this] { ++updates_; };
    device_.RecordLevel = [this](int percent) { levels_.push_back(percent); };
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
  std::vector<int> levels_;
  int updates_ = 0;
  FakeSoundInput input_;
  WaveDevice device_{loop_, output_, &input_};
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

class WaveRecordingTest : public WaveDeviceTest {
protected:
  WaveRecordingTest() { device_.Command("Record"); }
  void Hear(const Samples& sound) {
    input_.heard = sound;
    loop_.Advance(std::chrono::milliseconds(100));
  }
  std::size_t Files() const {
    const std::filesystem::directory_iterator files(folder_.Path());
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
  }
  // Nothing is left of the recording, and the file is as it was before.
  void ExpectGivenUp() {
    EXPECT_NE(device_.Mode(), MultimediaMode::Recording);
    EXPECT_FALSE(input_.running);
    device_.Command("Save");
    EXPECT_TRUE(ReadAll(path_) == sound_);
    EXPECT_EQ(Files(), 1U);
    EXPECT_EQ(loop_.RunningTimers(), 0U);
  }

  const Samples said_ = Speech(-10, 0.5, 7);
};

TEST_F(WaveRecordingTest, ReplacesTheFileOnlyWhenItIsSaved) {
  EXPECT_EQ(device_.Mode(), MultimediaMode::Recording);
  Hear(said_);
  EXPECT_TRUE(ReadAll(path_) == sound_);
  Samples twice = said_;
  twice.insert(twice.end(), said_.begin(), said_.end());
  input_.heard = said_; // and not fetched when the user saves
  device_.Command("SAVE");
  EXPECT_EQ(device_.Mode(), MultimediaMode::Stopped);
  EXPECT_FALSE(input_.running);
  int rate = 0;
  EXPECT_TRUE(ReadAll(path_, &rate) == twice);
  EXPECT_EQ(rate, kMicrophoneRate);
  EXPECT_EQ(device_.Length(), static_cast<long>(twice.size()) * 1000 / rate);
  device_.Command("Play");
  EXPECT_TRUE(Played() == twice);
  EXPECT_EQ(Files(), 1U);
  EXPECT_THAT(troubles_, IsEmpty());
}

TEST_F(WaveRecordingTest, IsGivenUpByClosing) {
  Hear(said_);
  device_.Command("Close");
  ExpectGivenUp();
  device_.Command("Record");
  EXPECT_EQ(device_.Mode(), MultimediaMode::NotReady) << "nothing is open";
  EXPECT_THAT(troubles_, IsEmpty());
}

TEST_F(WaveRecordingTest, CanBeSavedAfterAStopAndBegunAnew) {
  Hear(said_);
  device_.Command("Stop");
  EXPECT_EQ(device_.Mode(), MultimediaMode::Stopped);
  device_.Command("Record"); // in the place of the first
  Hear(said_);
  device_.Command("Stop");
  device_.Command("Save");
  EXPECT_TRUE(ReadAll(path_) == said_);
}

TEST_F(WaveRecordingTest, LeavesTheFileWhenNothingWasHeard) {
  device_.Command("Save");
  ExpectGivenUp();
  EXPECT_THAT(troubles_, ElementsAre(HasSubstr("Nothing was recorded")));
}

TEST_F(WaveRecordingTest, NeedsNoFileAndSaysNoWordAboutOneThatCannotBeRead) {
  for (const bool damaged : {false, true}) {
    device_.Command("Close");
    std::filesystem::remove(path_);
    std::ofstream(path_ + ".recording") << "what a crash has left";
    if (damaged)
      std::ofstream(path_) << "RIFF";
    device_.Command("Open");
    device_.Command("Record");
    Hear(said_);
    device_.Command("Save");
    EXPECT_TRUE(ReadAll(path_) == said_);
    EXPECT_EQ(Files(), 1U);
  }
  EXPECT_THAT(troubles_, IsEmpty());
}

TEST_F(WaveRecordingTest, TellsWhenThereIsNoMicrophone) {
  const auto hangs = [this] { loop_.Advance(std::chrono::seconds(11)); };
  const auto missing = [this] {
    input_.lost = true;
    loop_.Advance(std::chrono::milliseconds(100));
  };
  for (const std::function<void()>& happens : {std::function<void()>(hangs), std::function<void()>(missing)}) {
    device_.Command("Record");
    happens();
    EXPECT_THAT(troubles_, ElementsAre(HasSubstr("There is no microphone: ")));
    ExpectGivenUp();
    troubles_.clear();
  }
  WaveDevice deaf(loop_, output_);
  deaf.Trouble = device_.Trouble;
  deaf.SetFileName(path_);
  deaf.Command("Open");
  deaf.Command("Record");
  EXPECT_THAT(troubles_, ElementsAre(HasSubstr("There is no microphone: ")));
  ExpectGivenUp();
}

TEST_F(WaveRecordingTest, KeepsWhatItHasWhenItEndsByItself) {
  const auto lose = [this] {
    input_.lost = true;
    Hear(said_);
    return said_;
  };
  const auto hang = [this] {
    Hear(said_);
    loop_.Advance(std::chrono::seconds(11));
    return said_;
  };
  const auto go_on = [this] { // for more than the longest time
    const Samples piece(100 * kMicrophoneRate, 1000);
    for (int i = 0; i < 11; ++i)
      Hear(piece);
    return Samples(std::size_t{1000} * kMicrophoneRate, 1000);
  };
  using Case = std::function<Samples()>;
  for (const Case& happens : {Case(lose), Case(hang), Case(go_on)}) {
    input_.lost = false;
    device_.Command("Record");
    const Samples kept = happens();
    EXPECT_FALSE(input_.running);
    EXPECT_EQ(troubles_.size(), 1U);
    EXPECT_EQ(levels_.back(), 0);
    EXPECT_EQ(device_.Mode(), MultimediaMode::Recording) << "until it is saved";
    device_.Command("Save");
    EXPECT_TRUE(ReadAll(path_) == kept);
    troubles_.clear();
  }
}

TEST_F(WaveRecordingTest, IsGivenUpOnAFullDisk) {
  for (const bool saving : {false, true}) {
    device_.Command("Record");
    {
      const FullDisk full(5000);
      if (saving)
        input_.heard = said_;
      else
        Hear(said_);
      device_.Command("Save");
    }
    EXPECT_THAT(troubles_, ElementsAre(HasSubstr("Could not record")));
    ExpectGivenUp();
    troubles_.clear();
  }
}

TEST_F(WaveRecordingTest, TellsHowLoudItIs) {
  Hear({});
  EXPECT_THAT(levels_, IsEmpty());
  for (const int peak : {0, 1, 1036, -16423, -32768})
    Hear(Samples(kMicrophoneRate / 10, static_cast<std::int16_t>(peak)));
  EXPECT_THAT(levels_, ElementsAre(0, 0, 50, 90, 100));
}

} // namespace
} // namespace kelmio

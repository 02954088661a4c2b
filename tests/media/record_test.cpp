#include <atomic>
#include <filesystem>
#include <thread>

#include "core/store_file.h"
#include "media/full_disk.h"
#include "media/sound_desk.h"
#include "media/wave_recorder.h"

namespace kelmio {
namespace {

using namespace test;

class RecordSound : public SoundTest {};

TEST_F(RecordSound, TheDefaultFormatPassesTheCallBitByBit) {
  const Samples call = Speech(-20, 3);
  ASSERT_TRUE(sound_->Record(Request()));
  EXPECT_TRUE(std::filesystem::exists(path_));
  EXPECT_TRUE(IsBeingWritten(path_)) << "another copy of the program must be able to tell";
  EXPECT_FALSE(sound_->Record(Request())) << "one runs already";
  Run(call);
  sound_->StopRecord();
  EXPECT_EQ(ReadAll(path_), call);
  EXPECT_FALSE(IsBeingWritten(path_));
  EXPECT_EQ(Reports(), "recorded ");
  sound_->StopRecord();
  EXPECT_EQ(Reports(), "");
}

TEST_F(RecordSound, MixesBothDirectionsAndSaturates) {
  const std::string greeting = folder_.Path() + "greeting.wav";
  {
    std::string error;
    const auto writer = WaveWriter::Create(greeting, {}, error);
    ASSERT_TRUE(writer) << error;
    writer->Write(Samples(8000, 30000));
  }
  sound_->Play(greeting);
  ASSERT_TRUE(sound_->Record(Request()));
  Run(Samples(4000, 1000));
  Run(Samples(4000, 10000));
  Samples sent(160);
  for (int i = 0; i < 50; ++i)
    port_->ToSend(sent, 8000); // a far side that sends nothing
  sound_->StopRecord();
  EXPECT_EQ(ReadAll(path_), Samples(4000, 31000) + Samples(4000, 32767) + Samples(8000, 0));
  EXPECT_EQ(Reports(), "played recorded ");
}

TEST_F(RecordSound, KeepsLengthAndSoundWhenTheLinesRateIsAnotherOrChanges) {
  ASSERT_TRUE(sound_->Record(Request()));
  Run(Sines({500}, -10, 1, 48000), 48000);
  sound_->StopRecord();
  EXPECT_EQ(ReadAll(path_).size(), 8000U);
  EXPECT_GT(SignalToNoise(Sines({500}, -10, 1), ReadAll(path_)), 40);

  ASSERT_TRUE(sound_->Record(Request()));
  Run(Sines({500}, -10, 1), 8000);
  Run(Sines({500}, -10, 1, 16000), 16000);
  Run(Sines({500}, -10, 1), 8000);
  sound_->StopRecord();
  EXPECT_NEAR(static_cast<double>(ReadAll(path_).size()), 24000, 4);
  EXPECT_NEAR(LevelOf(ReadAll(path_)), -10, 0.2);
}

TEST_F(RecordSound, EndsByItselfAtTheLengthLimitAndListensOn) {
  RecordRequest request = Request(2);
  request.watch_signal = true;
  ASSERT_TRUE(sound_->Record(request));
  Run(Speech(-20, 3));
  std::string reports;
  ASSERT_TRUE(Wait([&] { return (reports += Reports()).find("recorded") != std::string::npos; }));
  EXPECT_EQ(ReadAll(path_).size(), 16000U);
  Run(Quiet(1));
  EXPECT_EQ(Reports(), "silence ");
  sound_->StopRecord();
  Run(Speech(-20, 1));
  EXPECT_EQ(Reports(), "") << "no second end, and no watch any more";
  EXPECT_EQ(ReadAll(path_).size(), 16000U);

  request.max_seconds = 2147483646;
  ASSERT_TRUE(sound_->Record(request));
  Run(Quiet(1));
  EXPECT_EQ(Reports(), "voice silence ") << "it began while sound was still in the air";
  sound_->StopRecord();
  EXPECT_EQ(ReadAll(path_).size(), 8000U);
}

TEST_F(RecordSound, TheWatchIsSilentBeforeAndBetweenRecordings) {
  RecordRequest request = Request();
  request.watch_signal = true;
  Run(Quiet(1));
  EXPECT_EQ(Reports(), "");
  ASSERT_TRUE(sound_->Record(request));
  Run(Quiet(0.5)); // its report is under way now
  sound_->StopRecord();
  EXPECT_EQ(Reports(), "recorded ");
  Samples nothing(160);
  ASSERT_TRUE(sound_->Record(request));
  Run(Speech(-20, 1));
  for (int i = 0; i < 50; ++i)
    port_->ToSend(nothing, 8000);
  EXPECT_EQ(Reports(), "silence voice silence ") << "a far side that sends nothing is silent";
  Run(Repeat(Sines({425}, -15, 0.5) + Quiet(0.5), 5));
  EXPECT_NE(Reports().find("busy"), std::string::npos);
}

TEST_F(RecordSound, ReportsBlocksButNeverPilesThemUp) {
  RecordRequest request = Request();
  request.report_blocks = true;
  const Samples call = Speech(-20, 5);
  ASSERT_TRUE(sound_->Record(request));
  Run(call);
  sound_->StopRecord(); // 39 blocks have come while nobody looked
  Reports();
  ASSERT_GE(blocks_.size(), 1U);
  EXPECT_LE(blocks_.size(), 8U);
  const auto first = std::as_bytes(std::span(call).first(1024));
  EXPECT_TRUE(std::equal(first.begin(), first.end(), blocks_[0].begin(), blocks_[0].end()));
  blocks_.clear();
  ASSERT_TRUE(sound_->Record(request));
  Run(call);
  sound_->StopRecord();
  Reports();
  EXPECT_FALSE(blocks_.empty());
}

TEST_F(RecordSound, ADestroyedSoundFinishesItsFile) {
  const Samples call = Speech(-20, 2);
  ASSERT_TRUE(sound_->Record(Request()));
  Run(call);
  sound_.reset();
  Run(call);
  EXPECT_EQ(ReadAll(path_), call);
  EXPECT_EQ(Reports(), "");
}

TEST_F(RecordSound, TellsWhyAFileCannotBeMade) {
  RecordRequest request = Request();
  request.path = folder_.Path() + "missing/message.wav";
  EXPECT_FALSE(sound_->Record(request));
  request = Request();
  request.format.samples_per_second = 7999;
  EXPECT_FALSE(sound_->Record(request));
  EXPECT_EQ(Reports(), "trouble trouble ");
  EXPECT_TRUE(sound_->Record(Request()));
}

TEST_F(RecordSound, AFullDiskLeavesAWholeFile) {
  const Samples call = Speech(-20, 8);
  ASSERT_TRUE(sound_->Record(Request()));
  {
    const FullDisk disk(60001); // in the middle of a sample
    Run(call);
    std::string reports;
    ASSERT_TRUE(Wait([&] { return (reports += Reports()).find("recorded") != std::string::npos; }));
    EXPECT_EQ(reports, "trouble recorded ");
  }
  EXPECT_NE(trouble_.find("File too large"), std::string::npos) << trouble_;
  const Samples kept = ReadAll(path_);
  ASSERT_GT(kept.size(), 29900U);
  EXPECT_TRUE(std::equal(kept.begin(), kept.end(), call.begin()));
  EXPECT_EQ(std::filesystem::file_size(path_), 44 + 2 * kept.size());
  sound_->StopRecord();
  EXPECT_EQ(Reports(), "");
  EXPECT_TRUE(sound_->Record(Request())) << "the next recording starts afresh";
}

TEST_F(RecordSound, LossesOfASlowDiskAreReportedNotSilent) {
  const auto target = std::make_shared<ReportTarget>(ReportTarget{*this});
  std::string error;
  const auto recorder = WaveRecorder::Create(Request(), Reporter(loop_, target), error);
  ASSERT_TRUE(recorder) << error;
  const Samples frame = Speech(-20, 0.02);
  for (int i = 0; i < 12 * 50; ++i) // no service meanwhile
    for (const Direction direction : {Direction::Far, Direction::Near})
      recorder->Put(direction, frame, 8000);
  recorder->Service();
  EXPECT_EQ(Reports(), "trouble ");
  EXPECT_NE(trouble_.find("2000 ms"), std::string::npos) << trouble_;
  EXPECT_EQ(ReadAll(path_).size(), 80000U) << "the header is true after each service";
  recorder->Finish();
}

TEST_F(RecordSound, OperationsAndSoundMayMeetInAnyWay) {
  const std::string greeting = folder_.Path() + "greeting.wav";
  ASSERT_TRUE(sound_->Record(Request()));
  Run(Speech(-20, 1));
  sound_->StopRecord();
  std::filesystem::copy_file(path_, greeting);
  RecordRequest request = Request(1);
  request.watch_signal = request.report_blocks = true;

  std::atomic<bool> stop{false};
  std::thread driver([&stop, port = port_] {
    const Samples far = Speech(-20, 0.02);
    Samples near(far.size());
    while (!stop) {
      port->Received(far, 8000);
      port->ToSend(near, 8000);
      std::this_thread::yield();
    }
  });
  for (int i = 0; i < 20; ++i) {
    EXPECT_TRUE(sound_->Play(greeting));
    sound_->Record(request);
    Reports();
    if (i % 2 == 0)
      sound_->StopRecord();
    if (i % 3 == 0)
      sound_->StopPlay();
  }
  sound_->StopRecord();
  Reports();
  EXPECT_TRUE(sound_->Record(request));
  EXPECT_TRUE(Wait([&] { return Reports().find("recorded") != std::string::npos; })) << "one second is full at last";
  sound_.reset();
  stop = true;
  driver.join();
  EXPECT_EQ(ReadAll(path_).size(), 8000U);
}

} // namespace
} // namespace kelmio

// The greeting at the desk, by the commands that its device gets.
#include <gmock/gmock.h>

#include <chrono>
#include <utility>

#include "fakes/fake_loop.h"
#include "settings_ui/greeting_recorder.h"
#include "settings_ui/moving_device.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class GreetingTest : public testing::Test {
protected:
  GreetingTest() {
    app_.SoundFolder = home_.Path() + "Sound";
    recorder_ = std::make_unique<GreetingRecorder>(
        app_, mmc_, loop_, GreetingRecorder::Controls{file_, record_, play_, stop_, level_}, NoTroubleSink());
  }
  std::vector<std::string> Commands() { return std::exchange(mmc_.commands, {}); }
  /// Letters of the buttons that can be pressed: Record, Play, Stop.
  std::string Buttons() const {
    return std::string(record_.Enabled ? "R" : "") + (play_.Enabled ? "P" : "") + (stop_.Enabled ? "S" : "");
  }
  void StartPlaying() {
    file_.Text = " " + WaveFile() + " ";
    play_.Click();
  }
  std::string WaveFile() {
    const std::string path = home_.Path() + "hello.wav";
    test::WriteBytes(path, "RIFF");
    return path;
  }

  test::TemporaryFolder home_;
  FakeLoop loop_;
  test::MovingDevice mmc_;
  AppState app_;
  TextBox file_;
  Button record_;
  Button play_;
  Button stop_;
  ProgressBar level_;
  std::unique_ptr<GreetingRecorder> recorder_;
};

TEST_F(GreetingTest, RecordsAndShowsThatTheMicrophoneWorks) {
  record_.Click();
  EXPECT_EQ(file_.Text.Get(), app_.SoundFolder + "/Greeting.wav");
  EXPECT_EQ(mmc_.file_name, file_.Text.Get());
  EXPECT_THAT(Commands(), ElementsAre("Open", "Record"));
  EXPECT_EQ(Buttons(), "S");
  mmc_.RecordLevel(40);
  EXPECT_EQ(level_.Value, 40);

  stop_.Click();
  EXPECT_THAT(Commands(), ElementsAre("Save", "Close"));
  EXPECT_EQ(Buttons(), "RPS");
  EXPECT_EQ(level_.Value, 0);
}

TEST_F(GreetingTest, PlaysUntilTheEndOrTheStop) {
  app_.StopPlaybackFlag = true;
  StartPlaying();
  EXPECT_EQ(mmc_.file_name, home_.Path() + "hello.wav");
  EXPECT_THAT(Commands(), ElementsAre("Open", "Play"));
  EXPECT_EQ(Buttons(), "RS");
  loop_.Advance(1s);
  EXPECT_THAT(Commands(), IsEmpty());
  mmc_.mode = MultimediaMode::Stopped;
  loop_.Advance(1s);
  EXPECT_THAT(Commands(), ElementsAre("Stop", "Close"));
  EXPECT_EQ(Buttons(), "RPS");

  const std::pair<const char*, std::function<void()>> kEnds[] = {
      {"stop", [this] { stop_.Click(); }},
      {"flag of another", [this] { app_.StopPlaybackFlag = true; }},
      {"close", [this] { recorder_->Finish(); }},
  };
  for (const auto& [name, end] : kEnds) {
    StartPlaying();
    Commands();
    end();
    loop_.Advance(1s);
    EXPECT_THAT(Commands(), ElementsAre("Stop", "Close")) << name;
    EXPECT_EQ(loop_.RunningTimers(), 0U) << name;
  }

  mmc_.readable = false;
  StartPlaying();
  EXPECT_THAT(Commands(), ElementsAre("Open", "Play", "Stop", "Close"));
  EXPECT_EQ(Buttons(), "RPS");
  file_.Text = home_.Path() + "none.wav";
  play_.Click();
  EXPECT_THAT(Commands(), IsEmpty());
}

TEST_F(GreetingTest, RecordingEndsThePlayingThatWouldEndIt) {
  StartPlaying();
  record_.Click();
  loop_.Advance(1s);
  EXPECT_THAT(Commands(), ElementsAre("Open", "Play", "Stop", "Close", "Open", "Record"));
  EXPECT_EQ(Buttons(), "S");
  recorder_.reset();
  EXPECT_THAT(Commands(), ElementsAre("Save", "Close"));
  mmc_.RecordLevel(10); // goes to nobody
}

} // namespace
} // namespace kelmio

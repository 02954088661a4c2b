// Messages from the folder on disk to the samples that the sound output is given.
#include "messages/playback.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/mGeneral.h"
#include "core/mIni.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_loop.h"
#include "fakes/fake_sound_output.h"
#include "media/wave_device.h"
#include "support/temporary_folder.h"

namespace kelmio::test {
namespace {

constexpr long kSamplesPerMs = 8;
constexpr long kFirstMs = 10000;
constexpr long kSecondMs = 4000;

// An inbox of two unread messages, the first of them selected.
class Playback : public ::testing::Test, protected MessageListHost {
protected:
  Playback() {
    mGeneral::EnsureFolder(store_.InboxFolder());
    Write("Msg1.wav", "Anna", kFirstMs);
    Write("Msg2.wav", "Bert", kSecondMs);
    playback_.sldSlider.Layout(110, 20, 10, 16);
    list_.RefreshMessageList();
    Select(1);
  }
  void SetCallCount(const std::string&) override {}
  void PreviewMessage() override {}
  void PumpEvents() override { loop_.RunPending(); }

  void Write(const std::string& file, const std::string& name, long milliseconds) {
    std::string error;
    const std::vector<std::int16_t> sound(static_cast<std::size_t>(milliseconds * kSamplesPerMs), 100);
    WaveWriter::Create(store_.InboxFolder() + "/" + file, {}, error)->Write(sound);
    mIni::IniWriteSection(file, {{"Name", name}, {"Read", "False"}, {"Size", "-1"}, {"Length", "-1"}},
                          store_.IndexPath());
  }
  void Select(std::size_t row) {
    const std::uint64_t key = list_.lvwCalls.Row(row).key;
    list_.lvwCalls.SetSelection({key}, key);
  }
  // The sound has played for so long since it was started, and the slider has followed.
  void PlayFor(long milliseconds) {
    output_.heard = milliseconds;
    loop_.Advance(std::chrono::milliseconds(20));
  }
  long PlaysFrom(long length) const { return output_.sound ? length - output_.sound->Left() / kSamplesPerMs : -1; }
  std::string ReadMark(const std::string& file) const { return mIni::IniRead(file, "Read", store_.IndexPath()); }

  TemporaryFolder home_;
  FakeLoop loop_;
  FakeSoundOutput output_;
  WaveDevice device_{loop_, output_};
  AppState app_;
  Settings settings_;
  FakeRegistryStore registry_;
  MessageStore store_{home_.Path(), loop_, device_};
  MessageList list_{{settings_, registry_, store_, device_, *this}};
  MessagePlayback playback_{{app_, store_, list_, device_, [this] { PumpEvents(); }, NoTroubleSink()}};
};

TEST_F(Playback, GoesOnWhereAMessageWasStoppedAndStartsAnotherAtItsBeginning) {
  playback_.PlaySelectedMessage();
  EXPECT_EQ(PlaysFrom(kFirstMs), 0);
  PlayFor(5000);
  playback_.cmdStopPlay.Click();
  EXPECT_EQ(output_.sound, nullptr);
  EXPECT_EQ(playback_.PlayingRow(), -1);
  playback_.PlaySelectedMessage();
  EXPECT_EQ(PlaysFrom(kFirstMs), 5000);
  EXPECT_EQ(playback_.PlayingRow(), 1);
  Select(2);
  playback_.PlaySelectedMessage();
  EXPECT_EQ(PlaysFrom(kSecondMs), 0);
  EXPECT_EQ(playback_.sldSlider.Max(), kSecondMs);
}

TEST_F(Playback, RestsAtTheEndAndThenStartsAnew) {
  playback_.PlaySelectedMessage();
  PlayFor(kFirstMs + 700);
  EXPECT_EQ(playback_.sldSlider.Value(), kFirstMs);
  playback_.PlaySelectedMessage();
  EXPECT_EQ(PlaysFrom(kFirstMs), 0);
}

TEST_F(Playback, SeeksToWhereTheThumbIsDroppedHoweverLongItIsHeld) {
  playback_.PlaySelectedMessage();
  PlayFor(1000);
  ucSlider& slider = playback_.sldSlider;
  slider.MouseDown(ucSlider::MouseButton::Left, 0, slider.ThumbLeft() + 5, 10);
  slider.MouseMove(65, 10);
  PlayFor(300);
  EXPECT_EQ(slider.Value(), 6000);
  slider.MouseUp(ucSlider::MouseButton::Left, 0, 65, 10);
  EXPECT_EQ(PlaysFrom(kFirstMs), 6000);
  PlayFor(300);
  EXPECT_EQ(slider.Value(), 6300);

  playback_.cmdStopPlay.Click();
  const int starts = output_.starts;
  slider.MouseDown(ucSlider::MouseButton::Left, 0, 25, 10);
  slider.MouseUp(ucSlider::MouseButton::Left, 0, 25, 10);
  EXPECT_EQ(output_.starts, starts) << "nothing is open";
  playback_.PlaySelectedMessage();
  EXPECT_EQ(PlaysFrom(kFirstMs), 2000);
}

TEST_F(Playback, EndsWithEveryLoadOfTheFolder) {
  playback_.PlaySelectedMessage();
  list_.RefreshMessageList();
  EXPECT_EQ(output_.sound, nullptr);
  EXPECT_EQ(device_.Length(), 0);
}

TEST_F(Playback, MarksAsReadWhatTheLastLoadHasFoundUnread) {
  playback_.PlaySelectedMessage();
  EXPECT_EQ(ReadMark("Msg1.wav"), "True");
  EXPECT_FALSE(list_.lvwCalls.Row(1).bold);
  mIni::IniWrite("Msg1.wav", "Read", "False", store_.IndexPath());
  playback_.PlaySelectedMessage();
  EXPECT_EQ(ReadMark("Msg1.wav"), "True") << "the record still says unread";

  list_.RefreshMessageList();
  Select(1);
  mIni::IniWrite("Msg1.wav", "Read", "False", store_.IndexPath());
  playback_.PlaySelectedMessage();
  EXPECT_EQ(ReadMark("Msg1.wav"), "False") << "the record still says read";
}

TEST_F(Playback, StopsAFileWithoutSoundAtOnce) {
  Write("Msg1.wav", "Anna", 0);
  playback_.PlaySelectedMessage();
  EXPECT_TRUE(app_.StopPlaybackFlag);
  EXPECT_EQ(playback_.PlayingRow(), -1);
  EXPECT_EQ(output_.starts, 0);
}

} // namespace
} // namespace kelmio::test

#include <sndfile.h>

#include <fstream>

#include "media/sound_desk.h"
#include "media/wave_player.h"

namespace kelmio {
namespace {

using namespace test;

// Writes `mono` on each channel with any of libsndfile's codings.
void WriteFile(const std::string& path, const Samples& mono, int format, int rate, int channels) {
  SF_INFO info{};
  info.samplerate = rate;
  info.channels = channels;
  info.format = format;
  SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
  ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
  sf_command(file, SFC_SET_SCALE_INT_FLOAT_WRITE, nullptr, SF_TRUE);
  Samples frames;
  for (const std::int16_t sample : mono)
    frames.insert(frames.end(), static_cast<std::size_t>(channels), sample);
  sf_writef_short(file, frames.data(), static_cast<sf_count_t>(mono.size()));
  sf_close(file);
}

class PlaySound : public SoundTest {
protected:
  const std::string greeting_ = folder_.Path() + "greeting.wav";
};

TEST_F(PlaySound, AGreetingInTheLinesOwnFormatArrivesBitByBit) {
  for (const std::size_t length : {8000UL, 8001UL, 1UL}) {
    Samples greeting = Speech(-20, 2);
    greeting.resize(length);
    greeting.front() = 12345;
    greeting.back() = -12345;
    WriteFile(greeting_, greeting, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1);
    ASSERT_TRUE(sound_->Play(greeting_));
    Samples sent;
    while (sent.size() < length) {
      EXPECT_EQ(Reports(), "") << "before the last sample was given";
      sent = sent + Tick(Quiet(0.02));
    }
    sent = sent + Tick(Quiet(0.02));
    EXPECT_EQ(Reports(), "played ");
    greeting.resize(sent.size());
    EXPECT_EQ(sent, greeting);
    EXPECT_EQ(Run(Quiet(1)), Quiet(1));
    EXPECT_EQ(Reports(), "");
  }
}

TEST_F(PlaySound, EveryCommonFormatArrivesWholeAndAtTheRightPlace) {
  struct Case {
    int coding, rate, channels;
    double least_fidelity; // decibels
  };
  const Case cases[] = {{SF_FORMAT_PCM_U8, 8000, 1, 25},    {SF_FORMAT_PCM_24, 48000, 2, 40},
                        {SF_FORMAT_PCM_32, 44100, 1, 40},   {SF_FORMAT_FLOAT, 22050, 2, 40},
                        {SF_FORMAT_ULAW, 8000, 1, 25},      {SF_FORMAT_ALAW, 11025, 1, 25},
                        {SF_FORMAT_GSM610, 8000, 1, 8},     {SF_FORMAT_IMA_ADPCM, 22050, 1, 20},
                        {SF_FORMAT_MS_ADPCM, 16000, 1, 20}, {SF_FORMAT_PCM_16, 44100, 2, 40}};
  for (const Case& each : cases) {
    SCOPED_TRACE(std::to_string(each.coding) + " at " + std::to_string(each.rate));
    // Full level from the first sample to the last: nothing may be missing at either end.
    WriteFile(greeting_, Sines({500, 740}, -18, 1, each.rate), SF_FORMAT_WAV | each.coding, each.rate, each.channels);
    for (const int line_rate : {8000, 16000, 48000}) {
      ASSERT_TRUE(sound_->Play(greeting_));
      const Samples sent = Run(Samples(static_cast<std::size_t>(line_rate) * 5 / 4), line_rate);
      EXPECT_EQ(Reports(), "played ");
      const Samples expected = Sines({500, 740}, -18, 1, line_rate);
      EXPECT_GT(SignalToNoise(expected, sent), std::min(each.least_fidelity, 33.0));
      const auto tail = static_cast<std::size_t>(line_rate) * 11 / 10; // a last block may be filled up
      EXPECT_LT(LevelOf(std::span(sent).subspan(tail)), -90);
    }
  }
}

TEST_F(PlaySound, TheLinesRateMayChangeInTheMiddle) {
  WriteFile(greeting_, Sines({500}, -10, 2), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1);
  ASSERT_TRUE(sound_->Play(greeting_));
  EXPECT_GT(SignalToNoise(Sines({500}, -10, 1), Run(Quiet(1))), 60);
  const Samples wide = Run(Samples(24000), 16000);
  EXPECT_NEAR(LevelOf(std::span(wide).first(15800)), -10, 0.2);
  EXPECT_LT(LevelOf(std::span(wide).subspan(16200)), -90);
  EXPECT_EQ(Reports(), "played ");
}

TEST_F(PlaySound, ALongFileIsReadAheadWithoutAGap) {
  const Samples longer = Noise(-20, 30);
  WriteFile(greeting_, longer, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1);
  std::string error;
  const auto player = WavePlayer::Open(greeting_, error);
  ASSERT_TRUE(player) << error;
  Samples sent;
  Samples frame(160);
  while (!player->Ended()) {
    player->Give(frame, 8000);
    sent = std::move(sent) + frame;
    if (sent.size() % 16000 == 0)
      player->Service();
  }
  sent.resize(longer.size());
  EXPECT_EQ(sent, longer);
}

TEST_F(PlaySound, StoppedAndReplacedPlaybacksReportNothing) {
  WriteFile(greeting_, Sines({500}, -10, 0.1), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1);
  ASSERT_TRUE(sound_->Play(greeting_));
  Run(Quiet(0.2)); // its report is under way now
  sound_->StopPlay();
  EXPECT_EQ(Reports(), "");
  ASSERT_TRUE(sound_->Play(greeting_));
  Run(Quiet(0.04));
  ASSERT_TRUE(sound_->Play(greeting_));
  EXPECT_EQ(Run(Quiet(0.2)), Sines({500}, -10, 0.1) + Quiet(0.1)) << "from the start again";
  EXPECT_EQ(Reports(), "played ");
  ASSERT_TRUE(sound_->Play(greeting_));
  sound_.reset();
  EXPECT_EQ(Run(Quiet(0.2)), Quiet(0.2)) << "the port lives on, silent";
  EXPECT_EQ(Reports(), "");
}

TEST_F(PlaySound, RefusesWhatHoldsNoSound) {
  EXPECT_FALSE(sound_->Play(folder_.Path() + "missing.wav"));
  EXPECT_FALSE(sound_->Play(folder_.Path()));
  WriteFile(greeting_, {}, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1);
  EXPECT_FALSE(sound_->Play(greeting_));
  std::ofstream(greeting_) << "Not a wave file at all, but some words.";
  EXPECT_FALSE(sound_->Play(greeting_));
  EXPECT_EQ(Reports(), "trouble trouble trouble trouble ");
  EXPECT_NE(trouble_.find(greeting_), std::string::npos);
}

} // namespace
} // namespace kelmio

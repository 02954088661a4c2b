#include "media/desk/desk_handset.h"

#include <gtest/gtest.h>

#include "media/desk/wideband.h"

namespace kelmio {
namespace {

using namespace test;

/// Which of the two clocks ticks just before the other: the best and the worst that can be for one direction.
enum class First { Line, Stream };

DriftBuffer::Clock::time_point now;
DriftBuffer::Clock::time_point Now() {
  return now;
}

struct Heard {
  Samples at_the_ear;
  Samples by_the_far_side;
};

/// `said` at the microphone, at `kDeskRate`; `far` on the line, at `rate`.
Heard Talk(DeskHandset& handset, const Samples& said, const Samples& far, int rate, First first) {
  Heard heard;
  const auto line_frame = static_cast<std::size_t>(rate) / 50;
  Samples ear(kDeskFrame);
  for (std::size_t i = 0; (i + 1) * kDeskFrame <= said.size() && (i + 1) * line_frame <= far.size(); ++i) {
    const auto stream = [&] {
      handset.ToPlay(ear);
      handset.Captured(std::span(said).subspan(i * kDeskFrame, kDeskFrame), 60);
      heard.at_the_ear.insert(heard.at_the_ear.end(), ear.begin(), ear.end());
    };
    const auto line = [&] {
      Samples sent(line_frame);
      handset.Hear(std::span(far).subspan(i * line_frame, line_frame), rate);
      handset.AddSaid(sent, rate);
      heard.by_the_far_side.insert(heard.by_the_far_side.end(), sent.begin(), sent.end());
    };
    now += std::chrono::milliseconds(20);
    if (first == First::Stream)
      stream();
    line();
    if (first == First::Line)
      stream();
  }
  return heard;
}

constexpr double Milliseconds(std::size_t samples, int rate) {
  return 1000.0 * static_cast<double>(samples) / rate;
}

// Of the 80 ms from mouth to ear that each way may take, the stream needs up to 40 for the loudspeaker's buffer, and up
// to 30 for the frame that the microphone fills and the piece in which it comes.
TEST(DeskHandset, CarriesBothVoicesInLittleTime) {
  constexpr double kEarBudget = 80 - 40;
  constexpr double kMouthBudget = 80 - 30;
  for (const int rate : {8000, 16000}) {
    for (const First first : {First::Line, First::Stream}) {
      SCOPED_TRACE(std::to_string(rate) + (first == First::Line ? ", the line first" : ", the stream first"));
      const Samples said = At(kDeskRate, Quiet(10) + Speech(-24, 20, 1));
      const Samples far = At(rate, Quiet(10) + Speech(-24, 20, 2));
      DeskHandset handset(Now);
      const Heard heard = Talk(handset, said, far, rate, first);

      const Samples far_at_desk = At(kDeskRate, Quiet(10) + Speech(-24, 20, 2));
      const Likeness ear = Compare(Seconds(far_at_desk, kDeskRate, 26, 29),
                                   Seconds(heard.at_the_ear, kDeskRate, 26, 29), kDeskRate / 10);
      EXPECT_GT(ear.correlation, 0.98);
      EXPECT_LE(Milliseconds(ear.delay, kDeskRate), kEarBudget);

      const Samples said_on_line = At(rate, Quiet(10) + Speech(-24, 20, 1));
      const auto line_rate = static_cast<std::size_t>(rate);
      const Likeness mouth =
          Compare(Seconds(said_on_line, rate, 26, 29), Seconds(heard.by_the_far_side, rate, 26, 29), line_rate / 10);
      EXPECT_GT(mouth.correlation, 0.8) << "cleaned and levelled, but the same voice";
      EXPECT_LE(Milliseconds(mouth.delay, rate), kMouthBudget);
    }
  }
}

TEST(DeskHandset, AddsTheVoiceToWhatIsPlayedAndSaturates) {
  DeskHandset handset(Now);
  const Samples shout = At(kDeskRate, Sines({500}, -4, 2));
  Samples frame(160);
  std::int16_t highest = 0;
  for (std::size_t at = 0; at + kDeskFrame <= shout.size(); at += kDeskFrame) {
    handset.Captured(std::span(shout).subspan(at, kDeskFrame), 60);
    frame.assign(frame.size(), 30000);
    handset.AddSaid(frame, 8000);
    highest = std::max(highest, *std::ranges::max_element(frame));
    EXPECT_GT(*std::ranges::min_element(frame), -10000) << "no sample wraps round";
  }
  EXPECT_EQ(highest, 32767);
}

} // namespace
} // namespace kelmio

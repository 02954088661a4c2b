#include "media/desk/desk_handset.h"

#include <gtest/gtest.h>

#include "media/desk/wideband.h"

namespace kelmio {
namespace {

using namespace test;

DriftBuffer::Clock::time_point now;
DriftBuffer::Clock::time_point Now() {
  return now;
}

struct Heard {
  Samples at_the_ear;
  Samples by_the_far_side;
};

/// `said` at the microphone, at `kDeskRate`; `far` on the line, at `rate`. The clock that ticks just before the other
/// makes the best and the worst that can be for one direction.
Heard Talk(const Samples& said, const Samples& far, int rate, bool line_first) {
  DeskHandset handset(Now);
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
    if (!line_first)
      stream();
    line();
    if (line_first)
      stream();
  }
  return heard;
}

// Of the 80 ms from mouth to ear that each way may take, the stream needs up to 40 for the loudspeaker's buffer, and up
// to 30 for the frame that the microphone fills and the piece in which it comes.
TEST(DeskHandset, CarriesBothVoicesInLittleTime) {
  constexpr int kEarBudget = 80 - 40;
  constexpr int kMouthBudget = 80 - 30;
  const Samples said = Quiet(10) + Speech(-24, 20, 1);
  const Samples far = Quiet(10) + Speech(-24, 20, 2);
  const auto compare = [](const Samples& original, const Samples& heard, int rate) {
    return Compare(Seconds(original, rate, 26, 29), Seconds(heard, rate, 26, 29), static_cast<std::size_t>(rate) / 10);
  };
  for (const int rate : {8000, 16000}) {
    for (const bool line_first : {true, false}) {
      SCOPED_TRACE(std::to_string(rate) + (line_first ? ", the line first" : ", the stream first"));
      const Heard heard = Talk(At(kDeskRate, said), At(rate, far), rate, line_first);

      const Likeness ear = compare(At(kDeskRate, far), heard.at_the_ear, kDeskRate);
      EXPECT_GT(ear.correlation, 0.98);
      EXPECT_LE(static_cast<int>(ear.delay), kEarBudget * kDeskRate / 1000);

      const Likeness mouth = compare(At(rate, said), heard.by_the_far_side, rate);
      EXPECT_GT(mouth.correlation, 0.8) << "cleaned and levelled, but the same voice";
      EXPECT_LE(static_cast<int>(mouth.delay), kMouthBudget * rate / 1000);
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

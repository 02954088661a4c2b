#include "drivers/sip/jitter_buffer.h"

#include <gtest/gtest.h>

#include <memory>

#include "drivers/sip/concealment.h"
#include "drivers/sip/sound_of_test.h"

namespace kelmio {
namespace {

constexpr std::uint32_t kFrame = JitterBuffer::kFrameUnits;
constexpr int kFirstFrames = JitterBuffer::kFirstDepth / kFrame;

// A packet whose bytes tell their place in time.
std::vector<std::uint8_t> Bytes(std::uint32_t timestamp, std::uint32_t length = kFrame) {
  std::vector<std::uint8_t> bytes(length);
  for (std::uint32_t i = 0; i < length; ++i)
    bytes[i] = static_cast<std::uint8_t>((timestamp + i) * 7 / 3);
  return bytes;
}

class JitterBufferTest : public testing::Test {
protected:
  void Put(std::uint32_t timestamp, std::uint32_t length = kFrame, bool marker = false) {
    buffer->Put(timestamp, marker, Bytes(timestamp, length));
  }
  static bool Holds(const JitterBuffer::Frame& frame, std::uint32_t timestamp) {
    const auto bytes = Bytes(timestamp);
    return frame.Whole() && std::equal(bytes.begin(), bytes.end(), frame.bytes.begin());
  }
  void PullSilence(int frames) {
    for (int i = 0; i < frames; ++i)
      EXPECT_TRUE(buffer->Pull().Hole());
  }
  std::unique_ptr<JitterBuffer> buffer = std::make_unique<JitterBuffer>();
};

TEST_F(JitterBufferTest, OrdersPacketsOfAnyLengthAcrossTheWrapOfTheClock) {
  const std::uint32_t start = 0U - 2 * kFrame;
  // 30 ms each, the second before the first.
  Put(start + 240, 240);
  Put(start, 240);
  Put(start + 480, 240);
  Put(start, 240);
  EXPECT_EQ(buffer->Statistics().duplicate, 1U);
  // The slowest of the first packets sets the depth.
  PullSilence(kFirstFrames);
  for (std::uint32_t i = 0; i < 4; ++i)
    EXPECT_TRUE(Holds(buffer->Pull(), start + i * kFrame)) << i;
  const auto half = buffer->Pull();
  EXPECT_TRUE(half.present[kFrame / 2 - 1]);
  EXPECT_FALSE(half.present[kFrame / 2]);
  EXPECT_TRUE(buffer->Pull().Hole());
}

TEST_F(JitterBufferTest, LeavesAHoleWhereAPacketIsMissingAndGoesOnInTime) {
  for (std::uint32_t i = 0; i < 5; ++i)
    if (i != 2)
      Put(i * kFrame);
  PullSilence(kFirstFrames);
  EXPECT_TRUE(Holds(buffer->Pull(), 0));
  EXPECT_TRUE(Holds(buffer->Pull(), kFrame));
  EXPECT_TRUE(Holds(buffer->Peek(1), 3 * kFrame));
  EXPECT_TRUE(buffer->Pull().Hole());
  EXPECT_TRUE(Holds(buffer->Pull(), 3 * kFrame));
  // What comes now is too late, and counted.
  Put(2 * kFrame);
  EXPECT_EQ(buffer->Statistics().late, 1U);
  EXPECT_TRUE(Holds(buffer->Pull(), 4 * kFrame));
}

TEST_F(JitterBufferTest, StartsANewTimeLineWhenTheSendersClockJumps) {
  Put(0);
  PullSilence(kFirstFrames);
  EXPECT_TRUE(Holds(buffer->Pull(), 0));
  // A stray alone changes nothing.
  Put(5'000'000);
  Put(kFrame);
  EXPECT_TRUE(Holds(buffer->Pull(), kFrame));
  const std::uint32_t jumped = 3'000'000'000;
  for (std::uint32_t i = 0; i < 8; ++i)
    Put(jumped + i * kFrame);
  EXPECT_EQ(buffer->Statistics().restarts, 1U);
  PullSilence(kFirstFrames);
  EXPECT_TRUE(Holds(buffer->Pull(), jumped + 3 * kFrame));
  // With the start of speech marked, at once.
  Put(77, kFrame, true);
  PullSilence(kFirstFrames);
  EXPECT_TRUE(Holds(buffer->Pull(), 77));
}

TEST_F(JitterBufferTest, AbsorbsClocksThatDifferOnlyWhereThereIsSilence) {
  // The sender makes 1001 frames while the reader takes 1000; every fourth second is silence.
  for (const double ratio : {1.001, 0.999}) {
    buffer = std::make_unique<JitterBuffer>();
    int lost = 0;
    double sent = 0;
    std::uint32_t next = 0;
    for (int tick = 0; tick < 50 * 600; ++tick) {
      for (sent += ratio; next < sent; ++next)
        Put(next * kFrame);
      const bool silence = tick / 50 % 4 == 0;
      const auto advice = silence ? buffer->Adjustment() : JitterBuffer::Advice::None;
      if (advice != JitterBuffer::Advice::InsertFrame) {
        const bool whole = buffer->Pull().Whole();
        lost += !whole && tick > kFirstFrames && !silence ? 1 : 0;
      }
      if (advice == JitterBuffer::Advice::DropFrame)
        buffer->Pull();
      buffer->Adjusted(advice);
    }
    const auto& figures = buffer->Statistics();
    EXPECT_EQ(figures.restarts, 0U);
    // Ten minutes are 30 frames apart; the depth has room for a few of them.
    EXPECT_NEAR(static_cast<double>(ratio > 1 ? figures.frames_dropped : figures.frames_inserted), 26, 3);
    EXPECT_LE(lost, ratio > 1 ? 0 : 30) << ratio;
  }
}

TEST(Concealment, FadesALongHoleToSilenceWithoutSwelling) {
  Concealment concealment(8000);
  auto voice = VoiceOfTest(0.2);
  concealment.Heard(voice);
  const auto loudest = [](std::span<const std::int16_t> samples) {
    int most = 0;
    for (const auto sample : samples)
      most = std::max(most, std::abs(static_cast<int>(sample)));
    return most;
  };
  const int before = loudest(voice);
  std::array<std::int16_t, kFrame> hole{};
  for (int frame = 0; frame < 3; ++frame) {
    concealment.Fill(hole, 0, {});
    EXPECT_LE(loudest(hole), before * 5 / 4);
  }
  for (int frame = 0; frame < 3; ++frame)
    concealment.Fill(hole, 0, {});
  EXPECT_EQ(loudest(hole), 0);
}

} // namespace
} // namespace kelmio

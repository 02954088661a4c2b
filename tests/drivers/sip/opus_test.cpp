// Opus on its way from packets to frames.
#include <gtest/gtest.h>

#include <opus/opus.h>

#include <memory>

#include "drivers/sip/audio_codec.h"
#include "drivers/sip/jitter_buffer.h"
#include "sound_of_test.h"

namespace kelmio {
namespace {

constexpr std::size_t kRate = 16000;
constexpr std::size_t kFrameSamples = 2 * JitterBuffer::kFrameUnits;

/// What another side sends.
struct Packet {
  std::uint32_t timestamp = 0;
  std::vector<std::uint8_t> payload;
};

std::vector<Packet> Packed(std::span<const std::int16_t> said, int milliseconds, std::uint32_t first) {
  const std::unique_ptr<OpusEncoder, decltype(&opus_encoder_destroy)> encoder(
      opus_encoder_create(kRate, 1, OPUS_APPLICATION_AUDIO, nullptr), &opus_encoder_destroy);
  const std::size_t samples = kRate / 1000 * static_cast<std::size_t>(milliseconds);
  std::vector<Packet> packets;
  for (std::size_t start = 0; start + samples <= said.size(); start += samples) {
    std::vector<std::uint8_t> payload(1000);
    payload.resize(static_cast<std::size_t>(opus_encode(encoder.get(), said.data() + start, static_cast<int>(samples),
                                                        payload.data(), static_cast<opus_int32>(payload.size()))));
    packets.push_back({first + static_cast<std::uint32_t>(start * 3), std::move(payload)});
  }
  return packets;
}

std::vector<std::int16_t> Heard(const std::vector<Packet>& packets, std::size_t frames) {
  AudioCodec codec(AudioCoding::Opus);
  JitterBuffer buffer;
  for (const Packet& packet : packets)
    if (const auto arrived = codec.Take(packet.timestamp, packet.payload))
      buffer.Put(arrived->timestamp, false, arrived->bytes);
  std::vector<std::int16_t> heard;
  for (std::size_t i = 0; i < frames; ++i) {
    const JitterBuffer::Frame frame = buffer.Pull();
    std::vector<std::int16_t> samples(kFrameSamples);
    if (frame.Whole())
      codec.Decode(frame.bytes, samples);
    heard.insert(heard.end(), samples.begin(), samples.end());
  }
  return heard;
}

TEST(Opus, ComesThroughInPacketsOfAnyLengthWhereverTheClockStands) {
  const std::vector<std::int16_t> said = VoiceOfTest(1.2, kRate);
  for (const int milliseconds : {5, 10, 20, 40, 60})
    for (const std::uint32_t first : {0U, 0xFFFFFF00U, 0xFFFF8000U}) {
      SCOPED_TRACE(testing::Message() << milliseconds << " ms from " << first);
      const auto heard = Heard(Packed(said, milliseconds, first), 75);
      const std::size_t offset = OffsetOf(said, heard, 1);
      EXPECT_GT(FidelityOf(said, std::span(heard).subspan(offset)).correlation, 0.98);
    }
}

TEST(Opus, TakesWhatIsOvertakenLostOrDamagedForNoMoreThanThat) {
  const std::vector<std::int16_t> said = VoiceOfTest(1.2, kRate);
  std::vector<Packet> packets = Packed(said, 20, 96'000);
  std::swap(packets[10], packets[12]);
  packets[30].payload.clear();
  packets[31].payload.assign(3, 0xFF); // more frames than a packet may hold
  packets.erase(packets.begin() + 45);
  const auto heard = Heard(packets, 75);
  const std::size_t offset = OffsetOf(said, heard, 1);
  const auto after = std::span(heard).subspan(offset);
  EXPECT_GT(FidelityOf(std::span(said).first(8000), after).correlation, 0.98);
  EXPECT_LE(DamagedFrames(said, after, kFrameSamples), 8);
}

TEST(Opus, IsSentInPacketsOfTwentyMilliseconds) {
  const std::vector<std::int16_t> said = VoiceOfTest(1.2, kRate);
  AudioCodec codec(AudioCoding::Opus);
  std::vector<Packet> packets;
  for (std::size_t start = 0; start + kFrameSamples <= said.size(); start += kFrameSamples) {
    std::array<std::uint8_t, JitterBuffer::kFrameUnits> bytes{};
    const auto payload = codec.Encode(std::span(said).subspan(start, kFrameSamples), bytes);
    ASSERT_FALSE(payload.empty());
    packets.push_back({static_cast<std::uint32_t>(start / 2) * codec.ClockPerByte(), {payload.begin(), payload.end()}});
  }
  const auto heard = Heard(packets, 75);
  // The encoder is one for speech, which keeps how it sounds rather than the form of its waves.
  EXPECT_GT(FidelityOf(said, std::span(heard).subspan(OffsetOf(said, heard, 1))).correlation, 0.85);
}

} // namespace
} // namespace kelmio

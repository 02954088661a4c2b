#include "drivers/sip/opus_codec.h"

#include <opus/opus.h>

#include <algorithm>
#include <utility>

namespace kelmio {

namespace {

constexpr int kUnitsPerSecond = 8000;
constexpr std::size_t kSamplesPerUnit = OpusCodec::kRate / kUnitsPerSecond;
constexpr int kLongestPacket = OpusCodec::kRate / 1000 * 120; // samples (RFC 6716 section 2.1.4)
constexpr int kBitRate = 32'000; // what wideband speech has use for (RFC 7587 section 3.1.1)
constexpr int kExpectedLoss = 5; // percent; makes the encoder say the most important twice

} // namespace

void OpusCodec::Deleter::operator()(OpusDecoder* decoder) const {
  opus_decoder_destroy(decoder);
}

void OpusCodec::Deleter::operator()(OpusEncoder* encoder) const {
  opus_encoder_destroy(encoder);
}

OpusCodec::OpusCodec()
    : decoder_(opus_decoder_create(kRate, 1, nullptr)),
      encoder_(opus_encoder_create(kRate, 1, OPUS_APPLICATION_VOIP, nullptr)) {
  if (!encoder_)
    return;
  opus_encoder_ctl(encoder_.get(), OPUS_SET_BITRATE(kBitRate));
  opus_encoder_ctl(encoder_.get(), OPUS_SET_INBAND_FEC(1));
  opus_encoder_ctl(encoder_.get(), OPUS_SET_PACKET_LOSS_PERC(kExpectedLoss));
}

OpusCodec::~OpusCodec() = default;

std::optional<OpusCodec::Run> OpusCodec::Keep(std::uint32_t timestamp, std::span<const std::uint8_t> packet) {
  const int units = packet.empty() ? OPUS_INVALID_PACKET
                                   : opus_packet_get_nb_samples(packet.data(), static_cast<opus_int32>(packet.size()),
                                                                kUnitsPerSecond);
  if (units <= 0)
    return std::nullopt;
  clock_ += static_cast<std::int32_t>(timestamp - last_timestamp_.value_or(timestamp));
  last_timestamp_ = timestamp;
  packets_[next_].assign(packet.begin(), packet.end());
  if (open_ == next_)
    open_.reset();
  run_.assign(static_cast<std::size_t>(units), next_);
  ++next_;
  return Run{static_cast<std::uint32_t>(clock_ / kClockPerUnit), run_};
}

void OpusCodec::Open(std::uint8_t place) {
  open_ = place;
  taken_ = 0;
  sound_.assign(kLongestPacket, 0);
  const std::vector<std::uint8_t>& packet = packets_[place];
  const int samples = decoder_ ? opus_decode(decoder_.get(), packet.data(), static_cast<opus_int32>(packet.size()),
                                             sound_.data(), kLongestPacket, 0)
                               : 0;
  sound_.resize(static_cast<std::size_t>(std::max(samples, 0)));
}

void OpusCodec::Decode(std::span<const std::uint8_t> units, std::span<std::int16_t> samples) {
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (open_ != units[i])
      Open(units[i]);
    for (std::size_t each = 0; each < kSamplesPerUnit; ++each)
      samples[i * kSamplesPerUnit + each] = taken_ < sound_.size() ? sound_[taken_++] : std::int16_t{0};
  }
}

std::size_t OpusCodec::Encode(std::span<const std::int16_t> samples, std::span<std::uint8_t> bytes) {
  if (!encoder_)
    return 0;
  const int size = opus_encode(encoder_.get(), samples.data(), static_cast<int>(samples.size()), bytes.data(),
                               static_cast<opus_int32>(bytes.size()));
  return static_cast<std::size_t>(std::max(size, 0));
}

} // namespace kelmio

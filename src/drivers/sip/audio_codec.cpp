#include "drivers/sip/audio_codec.h"

// The headers of spandsp name fixed-width types without bringing them in.
#include <cstdint>

#include <spandsp/telephony.h>

#include <spandsp/bit_operations.h>
#include <spandsp/g711.h>
#include <spandsp/g722.h>

namespace kelmio {

namespace {

constexpr int kWidebandBitRate = 64000;

} // namespace

const char* NameOf(AudioCoding coding) {
  switch (coding) {
  case AudioCoding::Pcmu:
    return "PCMU";
  case AudioCoding::Pcma:
    return "PCMA";
  case AudioCoding::G722:
    return "G722";
  case AudioCoding::Opus:
    return "opus";
  }
  return "";
}

struct AudioCodec::Wideband {
  Wideband()
      : encoder(g722_encode_init(nullptr, kWidebandBitRate, 0)),
        decoder(g722_decode_init(nullptr, kWidebandBitRate, 0)) {}
  ~Wideband() {
    g722_encode_free(encoder);
    g722_decode_free(decoder);
  }
  Wideband(const Wideband&) = delete;
  Wideband& operator=(const Wideband&) = delete;

  g722_encode_state_t* encoder;
  g722_decode_state_t* decoder;
};

AudioCodec::AudioCodec(AudioCoding coding) : coding_(coding) {
  if (coding == AudioCoding::G722)
    wideband_ = std::make_unique<Wideband>();
  else if (coding == AudioCoding::Opus)
    opus_ = std::make_unique<OpusCodec>();
}

AudioCodec::~AudioCodec() = default;

int AudioCodec::Rate() const {
  return kCodedBytesPerSecond * static_cast<int>(SamplesPerByte());
}

std::optional<AudioCodec::Arrival> AudioCodec::Take(std::uint32_t timestamp, std::span<const std::uint8_t> payload) {
  if (!opus_)
    return Arrival{timestamp, payload};
  const auto run = opus_->Keep(timestamp, payload);
  return run ? std::optional(Arrival{run->timestamp, run->units}) : std::nullopt;
}

void AudioCodec::Decode(std::span<const std::uint8_t> bytes, std::span<std::int16_t> samples) {
  if (opus_) {
    opus_->Decode(bytes, samples);
    return;
  }
  if (wideband_) {
    g722_decode(wideband_->decoder, samples.data(), bytes.data(), static_cast<int>(bytes.size()));
    return;
  }
  for (std::size_t i = 0; i < bytes.size(); ++i)
    samples[i] = coding_ == AudioCoding::Pcmu ? ulaw_to_linear(bytes[i]) : alaw_to_linear(bytes[i]);
}

std::span<const std::uint8_t> AudioCodec::Encode(std::span<const std::int16_t> samples, std::span<std::uint8_t> bytes) {
  if (opus_)
    return bytes.first(opus_->Encode(samples, bytes));
  if (wideband_) {
    g722_encode(wideband_->encoder, bytes.data(), samples.data(), static_cast<int>(samples.size()));
    return bytes;
  }
  for (std::size_t i = 0; i < samples.size(); ++i)
    bytes[i] = coding_ == AudioCoding::Pcmu ? linear_to_ulaw(samples[i]) : linear_to_alaw(samples[i]);
  return bytes;
}

} // namespace kelmio

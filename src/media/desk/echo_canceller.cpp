#include "media/desk/echo_canceller.h"

#include <algorithm>
#include <new>

#include <webrtc/modules/audio_processing/include/audio_processing.h>
#include <webrtc/modules/interface/module_common_types.h>

namespace kelmio {
namespace {

using webrtc::AudioProcessing;

/// The library works on 10 ms at a time.
constexpr std::size_t kChunk = kDeskRate / 100;
/// The longest delay that it takes.
constexpr int kMostDelayMs = 500;

std::unique_ptr<AudioProcessing> MakeProcessing() {
  webrtc::Config config;
  // The long filter holds a room's echo even when the delay is told wrong by some tens of milliseconds.
  config.Set(new webrtc::ExtendedFilter(true)); // NOLINT(cppcoreguidelines-owning-memory): the configuration owns it
  std::unique_ptr<AudioProcessing> processing(AudioProcessing::Create(config));
  if (!processing || processing->Initialize(kDeskRate, kDeskRate, kDeskRate, AudioProcessing::kMono,
                                            AudioProcessing::kMono, AudioProcessing::kMono) != 0)
    throw std::bad_alloc();
  processing->high_pass_filter()->Enable(true);
  // The mildest suppression takes out as much echo as the others, and harms the voice least when both speak.
  processing->echo_cancellation()->set_suppression_level(webrtc::EchoCancellation::kLowSuppression);
  processing->echo_cancellation()->Enable(true);
  processing->noise_suppression()->set_level(webrtc::NoiseSuppression::kModerate);
  processing->noise_suppression()->Enable(true);
  processing->gain_control()->set_mode(webrtc::GainControl::kAdaptiveDigital);
  processing->gain_control()->Enable(true);
  return processing;
}

} // namespace

struct EchoCanceller::Library {
  std::unique_ptr<AudioProcessing> processing = MakeProcessing();
  webrtc::AudioFrame frame;

  void Fill(std::span<const std::int16_t> chunk) {
    frame.sample_rate_hz_ = kDeskRate;
    frame.num_channels_ = 1;
    frame.samples_per_channel_ = chunk.size();
    std::ranges::copy(chunk, frame.data_);
  }
};

EchoCanceller::EchoCanceller() : library_(std::make_unique<Library>()) {}

EchoCanceller::~EchoCanceller() = default;

void EchoCanceller::Played(std::span<const std::int16_t> frame) noexcept {
  for (; frame.size() >= kChunk; frame = frame.subspan(kChunk)) {
    library_->Fill(frame.first(kChunk));
    library_->processing->AnalyzeReverseStream(&library_->frame);
  }
}

void EchoCanceller::Clean(std::span<std::int16_t> frame, int echo_delay_ms) noexcept {
  for (; frame.size() >= kChunk; frame = frame.subspan(kChunk)) {
    library_->Fill(frame.first(kChunk));
    library_->processing->set_stream_delay_ms(std::clamp(echo_delay_ms, 0, kMostDelayMs));
    if (library_->processing->ProcessStream(&library_->frame) == AudioProcessing::kNoError)
      std::copy_n(library_->frame.data_, kChunk, frame.begin());
  }
}

} // namespace kelmio

#include "media/signal_watch.h"

#include <algorithm>

namespace kelmio {

static_assert(VoiceDetector::kBlock == ToneDetector::kBlock);

namespace {

// In blocks of 10 ms. Two frequencies that beat slowly are known as a tone only after two of their windows of 40 ms.
constexpr int kOnset = 13;

/// Cuts `samples` into blocks and calls `process` for each that is full.
template <typename Block, typename Process>
void InBlocks(std::span<const std::int16_t> samples, Block& block, std::size_t& filled, Process process) {
  while (!samples.empty()) {
    const std::size_t count = std::min(samples.size(), block.size() - filled);
    std::copy_n(samples.begin(), count, block.begin() + static_cast<std::ptrdiff_t>(filled));
    samples = samples.subspan(count);
    filled += count;
    if (filled == block.size()) {
      filled = 0;
      process();
    }
  }
}

} // namespace

void SignalWatch::StartWatching() {
  watching_ = true;
  told_ = VoiceDetector::State::Unknown;
}

void SignalWatch::Process(std::span<const std::int16_t> samples) {
  InBlocks(samples, block_, filled_, [this] { ProcessBlock(); });
}

void SignalWatch::ProcessNear(std::span<const std::int16_t> samples) {
  InBlocks(samples, near_block_, near_filled_, [this] { near_ = near_voice_.Process(near_block_); });
}

void SignalWatch::ForgetNear() {
  near_voice_ = {};
  near_ = VoiceDetector::State::Unknown;
  near_filled_ = 0;
}

void SignalWatch::ProcessBlock() {
  for (const char digit : digits_.Process(block_))
    sink_.HeardDigit(digit);

  const ToneDetector::Finding tone = tones_.Process(block_);
  if (howler_.Process(block_) || tone.busy)
    sink_.HeardBusyTone();
  if (tone.steady_hertz != 0 && watching_)
    sink_.HeardTone(tone.steady_hertz);

  const bool tone_sounds = tones_.Follows();
  VoiceDetector::State state = voice_.Process(block_, tone_sounds);
  if (state != VoiceDetector::State::Voice)
    voiced_blocks_ = 0;
  else if (!tone_sounds)
    ++voiced_blocks_;
  // What turns out to be the beginning of a tone was no voice.
  if (state == VoiceDetector::State::Voice && voiced_blocks_ < kOnset && told_ != state)
    state = told_;
  if (near_ == VoiceDetector::State::Voice)
    state = VoiceDetector::State::Voice;
  if (!watching_ || state == told_)
    return;
  told_ = state;
  if (state == VoiceDetector::State::Silence)
    sink_.HeardSilence();
  else
    sink_.HeardVoice();
}

} // namespace kelmio

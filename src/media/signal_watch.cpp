#include "media/signal_watch.h"

#include <algorithm>

namespace kelmio {

static_assert(VoiceDetector::kBlock == ToneDetector::kBlock);

void SignalWatch::StartWatching() {
  watching_ = true;
  told_ = VoiceDetector::State::Unknown;
}

void SignalWatch::Process(std::span<const std::int16_t> samples) {
  while (!samples.empty()) {
    const std::size_t count = std::min(samples.size(), block_.size() - filled_);
    std::copy_n(samples.begin(), count, block_.begin() + static_cast<std::ptrdiff_t>(filled_));
    samples = samples.subspan(count);
    filled_ += count;
    if (filled_ == block_.size()) {
      filled_ = 0;
      ProcessBlock();
    }
  }
}

void SignalWatch::ProcessBlock() {
  for (const char digit : digits_.Process(block_))
    sink_.HeardDigit(digit);

  const ToneDetector::Finding tone = tones_.Process(block_);
  if (tone.busy)
    sink_.HeardBusyTone();
  if (tone.steady_hertz != 0 && watching_)
    sink_.HeardTone(tone.steady_hertz);

  const VoiceDetector::State state = voice_.Process(block_);
  if (!watching_ || state == told_)
    return;
  told_ = state;
  if (state == VoiceDetector::State::Silence)
    sink_.HeardSilence();
  else
    sink_.HeardVoice();
}

} // namespace kelmio

#include "media/wave_player.h"

#include <algorithm>

namespace kelmio {
namespace {

constexpr std::size_t kSecondsAhead = 4; // how long the disk may be late
constexpr std::size_t kReadChunk = 4096;

} // namespace

std::shared_ptr<WavePlayer> WavePlayer::Open(const std::string& path, std::string& error) {
  auto reader = WaveReader::Open(path, error);
  if (!reader)
    return nullptr;
  std::shared_ptr<WavePlayer> player(new WavePlayer(std::move(reader)));
  player->Service();
  return player;
}

WavePlayer::WavePlayer(std::unique_ptr<WaveReader> reader)
    : reader_(std::move(reader)), file_rate_(reader_->Rate()),
      ring_(kSecondsAhead * static_cast<std::size_t>(file_rate_)) {}

void WavePlayer::Service() {
  std::array<std::int16_t, kReadChunk> chunk;
  while (reader_) {
    const std::size_t wanted = std::min(ring_.Room(), chunk.size());
    if (wanted == 0)
      return;
    const std::size_t got = reader_->Read(std::span(chunk).first(wanted));
    ring_.Put(std::span(chunk).first(got));
    if (got < wanted) {
      reader_.reset();
      all_read_.store(true, std::memory_order_release);
    }
  }
}

void WavePlayer::Give(std::span<std::int16_t> frame, int rate) noexcept {
  const double ratio = static_cast<double>(rate) / file_rate_;
  std::size_t filled = 0;
  while (filled < frame.size() && !ended_) {
    if (pending_begin_ == pending_end_) {
      // Asked before the ring is: once this is true, what the ring holds is all there will be.
      const bool all_read = all_read_.load(std::memory_order_acquire);
      pending_begin_ = 0;
      pending_end_ = ring_.Take(pending_);
      pending_is_last_ = all_read && pending_end_ < pending_.size();
    }
    const auto pending = std::span(pending_).subspan(pending_begin_, pending_end_ - pending_begin_);
    const Resampler::Step step = resampler_.Convert(pending, frame.subspan(filled), ratio, pending_is_last_);
    pending_begin_ += step.used;
    filled += step.made;
    if (step.used == 0 && step.made == 0) {
      ended_ = pending_is_last_;
      break;
    }
  }
  std::fill(frame.begin() + static_cast<std::ptrdiff_t>(filled), frame.end(), std::int16_t{0});
}

} // namespace kelmio

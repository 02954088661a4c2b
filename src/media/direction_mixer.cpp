#include "media/direction_mixer.h"

#include <algorithm>
#include <limits>

namespace kelmio {

DirectionMixer::DirectionMixer(std::size_t max_lead) : max_lead_(max_lead), sums_(2 * max_lead + 1) {}

std::size_t DirectionMixer::Add(Direction direction, std::span<const std::int16_t> samples) noexcept {
  std::uint64_t& mine = Reached(direction);
  std::uint64_t& other = Reached(direction == Direction::Far ? Direction::Near : Direction::Far);
  const std::uint64_t room = taken_ + sums_.size() - mine;
  const std::size_t count = std::min(samples.size(), static_cast<std::size_t>(room));
  for (std::size_t i = 0; i < count; ++i, ++mine) {
    std::int32_t& sum = sums_[mine % sums_.size()];
    sum = (mine < other ? sum : 0) + samples[i];
  }
  if (mine > other + max_lead_)
    other = mine - max_lead_;
  return count;
}

std::size_t DirectionMixer::Take(std::span<std::int16_t> out) noexcept {
  const std::uint64_t ready = std::min(reached_[0], reached_[1]) - taken_;
  const std::size_t count = std::min(out.size(), static_cast<std::size_t>(ready));
  for (std::size_t i = 0; i < count; ++i, ++taken_) {
    using Limits = std::numeric_limits<std::int16_t>;
    out[i] =
        static_cast<std::int16_t>(std::clamp<std::int32_t>(sums_[taken_ % sums_.size()], Limits::min(), Limits::max()));
  }
  return count;
}

void DirectionMixer::Flush() noexcept {
  reached_[0] = reached_[1] = std::max(reached_[0], reached_[1]);
}

} // namespace kelmio

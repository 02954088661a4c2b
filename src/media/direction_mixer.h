// Puts the two directions of a call together into one stream.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace kelmio {

enum class Direction : std::uint8_t { Far, Near };

/// Adds the two directions sample by sample, saturating. A direction that stays away (a network that sends
/// nothing in silence) does not hold up the other: it counts as silent once the other is `max_lead` ahead.
/// One thread at a time; allocates only when made.
class DirectionMixer {
public:
  explicit DirectionMixer(std::size_t max_lead);

  /// Adds samples of one direction; takes as many as there is room for and gives their count. There is
  /// always room again once `Take` gives nothing.
  std::size_t Add(Direction direction, std::span<const std::int16_t> samples) noexcept;
  /// Fills the front of `out` with what both directions have reached, and gives the count.
  std::size_t Take(std::span<std::int16_t> out) noexcept;
  /// Nothing follows: what only one direction has reached is ready too.
  void Flush() noexcept;

private:
  std::uint64_t& Reached(Direction direction) { return reached_[static_cast<std::size_t>(direction)]; }

  std::size_t max_lead_;
  std::vector<std::int32_t> sums_;
  std::array<std::uint64_t, 2> reached_{}; // running totals of each direction
  std::uint64_t taken_ = 0;
};

} // namespace kelmio

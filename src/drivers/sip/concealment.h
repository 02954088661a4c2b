// Fills holes in the sound so that they aren't heard.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kelmio {

/// Continues the sound before a hole by linear prediction, continues the sound behind it backwards where it is
/// there already, and blends the two. A long hole fades to silence. Pure code, any one thread.
class Concealment {
public:
  /// `rate` is samples per second, 8000 or 16000.
  explicit Concealment(int rate);

  /// Sound that did arrive, in order. The first of it behind a hole that had to be filled without knowing what
  /// follows is blended in, so that it may change.
  void Heard(std::span<std::int16_t> samples);

  /// Fills `hole`, which follows what was given before. `more` samples of hole come behind it, then `after`, which
  /// is empty when unknown.
  void Fill(std::span<std::int16_t> hole, std::size_t more, std::span<const std::int16_t> after);

  /// Forgets the sound so far.
  void Reset();

private:
  void Bridge(std::size_t count, std::span<const std::int16_t> after);
  void FadeOut(std::span<std::int16_t> hole);
  void Remember(std::span<const std::int16_t> samples);

  std::size_t history_length_;
  std::size_t fade_length_;  // after so many samples of holes nothing is made up any more
  std::size_t blend_length_; // of the first sound behind a hole
  std::vector<double> history_;
  std::size_t missing_ = 0;          // samples since sound was last heard
  std::vector<double> tail_;         // how the last hole would have gone on
  std::vector<std::int16_t> bridge_; // what is left of a bridge over a hole of several parts
};

} // namespace kelmio

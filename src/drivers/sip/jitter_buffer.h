// Puts what arrives unevenly back on an even time line.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelmio {

/// A ring of coded bytes indexed by RTP time, for codings with one byte per unit of RTP time (G.711, G.722). One
/// end is fed with packets of any length in any order; the other is read in frames of 20 ms on the reader's own
/// clock, forever: what isn't there by its time reads as a hole, and time goes on. Pure code, any one thread.
///
/// Depth: reading starts `kFirstDepth` behind the slowest of the first packets. When packets come too late it grows,
/// when they all have more to spare than they need it shrinks; both by one frame at a time and only where the
/// reader says that nothing is being said, so that sound is neither torn nor stretched. That also absorbs two
/// clocks that differ.
class JitterBuffer {
public:
  static constexpr std::uint32_t kUnitsPerMillisecond = 8;
  static constexpr std::uint32_t kFrameUnits = 20 * kUnitsPerMillisecond;
  static constexpr std::uint32_t kFirstDepth = 120 * kUnitsPerMillisecond;
  /// Nothing further ahead of the reader than this is kept.
  static constexpr std::uint32_t kCapacity = 2048 * kUnitsPerMillisecond;

  struct Frame {
    std::array<std::uint8_t, kFrameUnits> bytes{};
    std::array<bool, kFrameUnits> present{};
    bool Whole() const;
    bool Hole() const;
  };

  struct Figures {
    std::uint64_t packets = 0;
    std::uint64_t late = 0; // came when their time had passed
    std::uint64_t duplicate = 0;
    std::uint64_t restarts = 0;
    std::uint64_t frames_dropped = 0;
    std::uint64_t frames_inserted = 0;
  };

  enum class Advice { None, DropFrame, InsertFrame };

  /// True when the time line starts anew with this packet: at the first one, and at a jump of the sender's clock.
  bool Put(std::uint32_t timestamp, bool marker, std::span<const std::uint8_t> bytes);

  /// Forgets everything; the next packet starts a new time line. The figures stay.
  void Reset();

  /// The next frame.
  Frame Pull();

  /// A frame to come, `offset` frames behind the next one, without taking it.
  Frame Peek(std::uint32_t offset) const;

  /// What to do while there is silence on the line. `DropFrame`: pull once more and let the silent frame go;
  /// `InsertFrame`: let this frame time pass without a pull. Tell `Adjusted` what was done.
  Advice Adjustment() const;
  void Adjusted(Advice done);

  const Figures& Statistics() const { return figures_; }

private:
  // The least time to spare of any packet, in two windows that follow each other, so that there is always a
  // full one to judge by.
  static constexpr std::uint32_t kWindowFrames = 10'000 / 20;
  static constexpr std::uint32_t kLargestShift = 300 * kUnitsPerMillisecond;
  static constexpr std::uint32_t kDeepest = 500 * kUnitsPerMillisecond;
  static constexpr std::int32_t kSpareWanted = 20 * static_cast<std::int32_t>(kUnitsPerMillisecond);
  static constexpr int kMisfitsToRestart = 4;

  void Start(std::uint32_t timestamp);
  bool Misfit(std::uint32_t timestamp, bool restart_now);
  void NoteSpare(std::int32_t spare);
  std::optional<std::int32_t> LeastSpare() const;

  std::array<std::uint8_t, kCapacity> bytes_{};
  std::array<bool, kCapacity> present_{};
  std::uint32_t next_ = 0; // RTP time of the next unit to be read
  bool running_ = false;
  bool priming_ = false; // nothing has been read yet that a packet brought
  std::uint32_t primed_shift_ = 0;
  int misfits_ = 0;
  std::uint32_t window_age_ = 0; // frames
  std::optional<std::int32_t> spare_now_;
  std::optional<std::int32_t> spare_before_;
  bool window_before_ = false; // a full window has passed
  Figures figures_;
};

} // namespace kelmio

#include "drivers/sip/jitter_buffer.h"

#include <algorithm>

namespace kelmio {

bool JitterBuffer::Frame::Whole() const {
  return std::all_of(present.begin(), present.end(), [](bool there) { return there; });
}

bool JitterBuffer::Frame::Hole() const {
  return std::none_of(present.begin(), present.end(), [](bool there) { return there; });
}

void JitterBuffer::Reset() {
  running_ = false;
}

void JitterBuffer::Start(std::uint32_t timestamp) {
  present_.fill(false);
  next_ = timestamp - kFirstDepth;
  running_ = true;
  priming_ = true;
  primed_shift_ = 0;
  misfits_ = 0;
  window_age_ = 0;
  window_before_ = false;
  spare_now_.reset();
  spare_before_.reset();
}

// Several packets that all miss the buffer mean that the sender's clock has jumped, one alone is a stray.
bool JitterBuffer::Misfit(std::uint32_t timestamp, bool restart_now) {
  if (++misfits_ < kMisfitsToRestart && !restart_now)
    return false;
  ++figures_.restarts;
  Start(timestamp);
  return true;
}

bool JitterBuffer::Put(std::uint32_t timestamp, bool marker, std::span<const std::uint8_t> bytes) {
  if (bytes.empty() || bytes.size() > kCapacity / 2)
    return false;
  ++figures_.packets;
  bool started = false;
  if (!running_) {
    Start(timestamp);
    started = true;
  }

  auto spare = static_cast<std::int32_t>(timestamp - next_);
  const auto length = static_cast<std::int32_t>(bytes.size());
  const bool beyond = spare > static_cast<std::int32_t>(kCapacity) - length;
  const bool late = spare <= -length;
  if (late)
    ++figures_.late;
  if (beyond || late) {
    // Where a stretch of speech begins a sender may start a new clock; no network delays a packet so long.
    const bool far = beyond || spare < -static_cast<std::int32_t>(kDeepest);
    if (late && !far)
      NoteSpare(spare);
    if (!Misfit(timestamp, marker && far))
      return started;
    started = true;
    spare = static_cast<std::int32_t>(kFirstDepth);
  } else {
    misfits_ = 0;
    // Until the first sound is read the start may still move, unheard.
    const auto wanted = static_cast<std::int32_t>(kFirstDepth);
    if (priming_ && spare < wanted && primed_shift_ < kLargestShift) {
      const auto shift = std::min(static_cast<std::uint32_t>(wanted - spare), kLargestShift - primed_shift_);
      next_ -= shift;
      primed_shift_ += shift;
      spare += static_cast<std::int32_t>(shift);
    }
    NoteSpare(spare);
  }

  bool anything_new = false;
  for (std::int32_t i = std::max(0, -spare); i < length; ++i) {
    const std::size_t at = (timestamp + static_cast<std::uint32_t>(i)) % kCapacity;
    anything_new = anything_new || !present_[at];
    bytes_[at] = bytes[static_cast<std::size_t>(i)];
    present_[at] = true;
  }
  if (!anything_new)
    ++figures_.duplicate;
  return started;
}

JitterBuffer::Frame JitterBuffer::Peek(std::uint32_t offset) const {
  Frame frame;
  if (!running_)
    return frame;
  for (std::uint32_t i = 0; i < kFrameUnits; ++i) {
    const std::size_t at = (next_ + offset * kFrameUnits + i) % kCapacity;
    frame.bytes[i] = bytes_[at];
    frame.present[i] = present_[at];
  }
  return frame;
}

JitterBuffer::Frame JitterBuffer::Pull() {
  Frame frame = Peek(0);
  if (!running_)
    return frame;
  for (std::uint32_t i = 0; i < kFrameUnits; ++i)
    present_[(next_ + i) % kCapacity] = false;
  next_ += kFrameUnits;
  if (!frame.Hole())
    priming_ = false;

  if (++window_age_ >= kWindowFrames) {
    window_age_ = 0;
    window_before_ = spare_now_.has_value();
    spare_before_ = spare_now_;
    spare_now_.reset();
  }
  return frame;
}

void JitterBuffer::NoteSpare(std::int32_t spare) {
  spare_now_ = std::min(spare, spare_now_.value_or(spare));
}

std::optional<std::int32_t> JitterBuffer::LeastSpare() const {
  if (spare_now_ && spare_before_)
    return std::min(*spare_now_, *spare_before_);
  return spare_now_ ? spare_now_ : spare_before_;
}

JitterBuffer::Advice JitterBuffer::Adjustment() const {
  const std::optional<std::int32_t> least = LeastSpare();
  if (!running_ || priming_ || !least)
    return Advice::None;
  // Something came too late: that much more is needed, and a little to spare. `least` holds over two windows,
  // so one packet that was extremely late makes the buffer deeper for a while and no longer.
  if (*least < 0 && *least > -static_cast<std::int32_t>(kDeepest))
    return Advice::InsertFrame;
  const bool plenty = *least >= static_cast<std::int32_t>(kFirstDepth + 2 * kFrameUnits) + kSpareWanted;
  return window_before_ && plenty ? Advice::DropFrame : Advice::None;
}

void JitterBuffer::Adjusted(Advice done) {
  const std::int32_t change = done == Advice::DropFrame     ? -static_cast<std::int32_t>(kFrameUnits)
                              : done == Advice::InsertFrame ? static_cast<std::int32_t>(kFrameUnits)
                                                            : 0;
  if (done == Advice::DropFrame)
    ++figures_.frames_dropped;
  if (done == Advice::InsertFrame)
    ++figures_.frames_inserted;
  for (auto* spare : {&spare_now_, &spare_before_})
    if (*spare)
      **spare += change;
}

} // namespace kelmio

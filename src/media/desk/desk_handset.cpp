#include "media/desk/desk_handset.h"

#include <algorithm>
#include <limits>

namespace kelmio {

void DeskHandset::ToPlay(std::span<std::int16_t> frame) noexcept {
  to_play_.Take(frame, kDeskRate);
  echo_.Played(frame);
}

void DeskHandset::Captured(std::span<const std::int16_t> frame, int echo_delay_ms) noexcept {
  std::array<std::int16_t, kDeskFrame> clean{};
  std::copy_n(frame.begin(), std::min(frame.size(), clean.size()), clean.begin());
  echo_.Clean(clean, echo_delay_ms);
  to_say_.Put(clean, kDeskRate);
}

void DeskHandset::AddSaid(std::span<std::int16_t> frame, int rate) noexcept {
  using Limits = std::numeric_limits<std::int16_t>;
  std::array<std::int16_t, kDeskFrame> said;
  while (!frame.empty()) {
    const auto part = std::span(said).first(std::min(frame.size(), said.size()));
    to_say_.Take(part, rate);
    for (std::size_t i = 0; i < part.size(); ++i)
      frame[i] = static_cast<std::int16_t>(std::clamp<int>(frame[i] + part[i], Limits::min(), Limits::max()));
    frame = frame.subspan(part.size());
  }
}

} // namespace kelmio

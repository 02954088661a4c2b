// Carries what the sound of a call has to report to the user interface thread.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "platform/event_loop.h"
#include "telephony/tapi_control/call_sound.h"

namespace kelmio {

/// What a report may touch when it arrives: user interface thread only. The numbers tell the present
/// playback and signal watch from earlier ones, whose reports may still be on their way.
struct ReportTarget {
  CallSoundEvents& events;
  std::uint64_t play = 0;
  std::uint64_t watch = 0; // 0 while nothing is watched
};

/// A copy may be used on any thread. Nothing arrives once the target is gone.
class Reporter {
public:
  Reporter(EventLoop& loop, std::weak_ptr<ReportTarget> target) : loop_(&loop), target_(std::move(target)) {}

  /// Runs `report(ReportTarget&)` later, in the order of posting.
  template <typename Report> void Post(Report report) const {
    // A sound can end with the loop itself, in a closure that never ran.
    if (target_.expired())
      return;
    loop_->Post([target = target_, report = std::move(report)]() mutable {
      if (const auto present = target.lock())
        report(*present);
    });
  }

private:
  EventLoop* loop_;
  std::weak_ptr<ReportTarget> target_;
};

} // namespace kelmio

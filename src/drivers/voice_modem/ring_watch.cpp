#include "drivers/voice_modem/ring_watch.h"

#include <algorithm>

namespace kelmio {
namespace {

// The two bursts of a British or Australian ring are one ring to who hears it.
constexpr RingWatch::Seconds kOneRing{1.2};
// No code tells that it stopped. The longest national period is 6 s.
constexpr RingWatch::Seconds kRingingStops{8};
// A report is over after this much quiet.
constexpr RingWatch::Seconds kReportEnds{0.5};

} // namespace

void RingWatch::Begin(Seconds now) {
  last_sign_ = now;
  if (ringing_)
    return;
  ringing_ = true;
  events_.new_call();
}

void RingWatch::Ring(Seconds now) {
  if (last_ring_ && now - *last_ring_ < kOneRing)
    return;
  Begin(now);
  last_ring_ = now;
  TellCaller();
  events_.ring(++count_);
}

void RingWatch::CallerIdLine(std::string_view line, Seconds now) {
  Begin(now);
  if (told_)
    return;
  if (!report_)
    report_.emplace();
  report_->Add(line);
  last_line_ = now;
  if (report_->Whole())
    TellCaller();
}

void RingWatch::TellCaller() {
  if (!report_ || told_)
    return;
  told_ = true;
  events_.caller(report_->Name(), report_->Number());
}

void RingWatch::Look(Seconds now) {
  if (report_ && !told_ && now - last_line_ >= kReportEnds)
    TellCaller();
  if (!ringing_ || now - last_sign_ < kRingingStops)
    return;
  Forget();
  events_.stopped();
}

std::optional<RingWatch::Seconds> RingWatch::Due() const {
  if (!ringing_)
    return std::nullopt;
  const Seconds stops = last_sign_ + kRingingStops;
  return report_ && !told_ ? std::min(stops, last_line_ + kReportEnds) : stops;
}

void RingWatch::Forget() {
  ringing_ = false;
  count_ = 0;
  last_ring_.reset();
  report_.reset();
  told_ = false;
}

} // namespace kelmio

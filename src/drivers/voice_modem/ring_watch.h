// Rings and caller identity on their way to one call: in any order, with any of them missing.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "drivers/voice_modem/caller_id_report.h"
#include "drivers/voice_modem/modem_clock.h"

namespace kelmio {

/// Pure code: the caller gives the time. Any one thread.
class RingWatch {
public:
  using Seconds = ModemClock::Seconds;

  struct Events {
    std::function<void()> new_call;
    std::function<void(int count)> ring;
    std::function<void(const std::string& name, const std::string& number)> caller;
    std::function<void()> stopped; // nobody rings any more
  };

  explicit RingWatch(Events events) : events_(std::move(events)) {}

  void Ring(Seconds now);
  /// One line of a report of who is calling. Exchanges that send it before the first ring begin a call with it.
  void CallerIdLine(std::string_view line, Seconds now);
  /// Does what is due.
  void Look(Seconds now);
  /// When `Look` is next needed; nothing while nobody rings.
  std::optional<Seconds> Due() const;
  bool Ringing() const { return ringing_; }
  /// The call has been answered or refused: it is no longer watched, and nothing is told.
  void Forget();

private:
  void Begin(Seconds now);
  void TellCaller();

  Events events_;
  bool ringing_ = false;
  int count_ = 0;
  Seconds last_sign_{0}; // a ring, or the caller identity before it
  std::optional<Seconds> last_ring_;
  std::optional<CallerIdReport> report_; // the one that is being gathered
  Seconds last_line_{0};
  bool told_ = false;
};

} // namespace kelmio

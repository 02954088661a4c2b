#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <utility>

namespace kelmio::emulated {

// The modem's own time, from when it was plugged in. A fast emulator has more of it per real second.
using Time = std::chrono::microseconds;

// What belongs together and is called off together.
enum class Group { Clock, Reply, Ringing, Dial, FarEnd, Stream, Fault };

// Things to be done later, in the order of their time. Not thread-safe.
class Schedule {
public:
  Time Now() const { return now_; }

  void In(Time delay, Group group, std::function<void()> what) {
    entries_.emplace(now_ + delay, Entry{group, std::move(what)});
  }

  void Cancel(Group group) {
    std::erase_if(entries_, [group](const auto& entry) { return entry.second.group == group; });
  }

  // Does all that is due until `time`, which is the time afterwards.
  void RunUntil(Time time) {
    while (!entries_.empty() && entries_.begin()->first <= time) {
      auto entry = entries_.extract(entries_.begin());
      now_ = entry.key();
      entry.mapped().what();
    }
    now_ = time;
  }

private:
  struct Entry {
    Group group;
    std::function<void()> what;
  };

  Time now_{0};
  std::multimap<Time, Entry> entries_;
};

} // namespace kelmio::emulated

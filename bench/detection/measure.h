// Takes messages as the program takes them, and tells when it hangs up.
#pragma once

#include <array>
#include <string>

#include "detection/corpus.h"

namespace kelmio::bench {

/// Seconds from the caller's hang-up to the end of the recording; below 0 for a false stop, infinite for none.
double EndOf(const Message& message);

struct Figures {
  /// A recording ends in time when the caller hung up so many seconds ago.
  static constexpr double kInTime = 12;
  /// What is aimed at: fewer false stops than this share of the messages, and at least that share in time.
  static constexpr double kMostFalseStops = 0.005;
  static constexpr double kLeastInTime = 0.99;

  struct Row {
    unsigned messages = 0;
    unsigned false_stops = 0;
    unsigned late = 0;
    double slowest = 0;
    double FalseStopShare() const { return messages == 0 ? 0 : static_cast<double>(false_stops) / messages; }
    /// Of the messages that weren't stopped before their end.
    double InTimeShare() const {
      return messages == false_stops ? 1 : 1 - static_cast<double>(late) / (messages - false_stops);
    }
    void Add(double end);
  };
  Row all;
  std::array<Row, static_cast<std::size_t>(Content::Count)> contents;
  std::array<Row, static_cast<std::size_t>(Ending::Count)> endings;
  std::array<Row, static_cast<std::size_t>(Coding::Count)> codings;
  Row lossy;
  std::string faults; // a line for each message that was stopped or ended late

  void Add(unsigned number, const Message& message, double end);
};

/// The messages from `first` up to but without `last`.
Figures Measure(unsigned first, unsigned last);

} // namespace kelmio::bench

// The log of calls: one key of one section for each call.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "core/trouble.h"
#include "platform/clock.h"

namespace kelmio {

/// An entry's value, split at "|": name, number, date, time, and what stands behind them. Missing fields are
/// empty, further ones dropped.
using CallLogFields = std::array<std::string, 5>;

struct CallLogEntry {
  std::string key; // the entry's identity; no date to be read
  CallLogFields fields;
};

/// Entries in the order of their first writing. Nothing is kept in memory. User interface thread only; clock and
/// sink must live as long.
class CallLog {
public:
  CallLog(std::string call_log_file, const Clock& clock, TroubleSink trouble = NoTroubleSink());

  /// Writes one entry. One of the same second is overwritten in its place.
  void LogNewCall(std::string_view name, std::string_view number);

  std::vector<std::string> Keys() const;
  CallLogFields Entry(std::string_view key) const;
  /// All entries that have a key, with one reading of the file.
  std::vector<CallLogEntry> Entries() const;

  void DeleteEntry(const std::string& key);
  /// As one change of the file.
  void DeleteEntries(const std::vector<std::string>& keys);

private:
  std::string file_;
  const Clock& clock_;
  TroubleSink trouble_;
};

} // namespace kelmio

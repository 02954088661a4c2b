// One message: its record in the index of its folder, and the texts made from it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/date_time.h"

namespace kelmio {

class IniDocument;

/// The index that each message folder holds.
inline constexpr std::string_view kMessageIndexName = "Messages.ini";

/// The nine keys of a record in the order in which they are written.
inline constexpr std::array<std::string_view, 9> kMessageKeys = {"Name", "Number", "Date", "Time",  "Read",
                                                                 "Mode", "Device", "Size", "Length"};

/// One row of the message list. An empty one stands where a record's file is missing.
struct MessageRecord {
  std::string FileName;
  std::string Name;
  std::string Number;
  DateValue Date;     // the zero date when it could not be read
  DateValue Time;     // on the zero date
  DateValue DateTime; // both as one, the zero date when they could not be joined
  std::string Device;
  std::string Mode;
  std::int32_t Size = 0;   // bytes; below zero: not yet known
  std::int32_t Length = 0; // milliseconds; below zero: not yet known
  bool Read = false;
};

/// The record of a section as it stands in an index.
MessageRecord ReadMessageRecord(const IniDocument& index, const std::string& file_name);

/// One point in time from the texts "mm/dd/yyyy" and "hh:nn:ss", each part read as the number it begins with; a
/// part beyond its range goes on into the next unit. Nothing when a part is missing.
std::optional<DateValue> MakeDateTime(std::string_view date_text, std::string_view time_text);

/// The length of a message as "hh:nn:ss". Every division rounds to the nearest number, ties to even, so that the
/// seconds can come out negative and are shown so: the format asks for it.
std::string FormatTime(std::int64_t milliseconds);

} // namespace kelmio

// Who is calling, out of the lines that a modem sends about it.
#pragma once

#include <string>
#include <string_view>

namespace kelmio {

/// Whether this line of a modem is part of a report: an item such as `NMBR = 5551234` in one of its spellings, or a
/// whole report in hex whose checksum holds.
bool IsCallerIdLine(std::string_view line);

/// Gathers the lines of one call's report. It is over with `Whole`, or with the next ring, or half a second after the
/// last line. Any one thread.
class CallerIdReport {
public:
  /// `line` is one for which `IsCallerIdLine` holds. Of several numbers or names the first that tells
  /// something counts, since some lines send the number and then a second one that says there is none.
  void Add(std::string_view line);

  bool Empty() const { return !begun_; }
  /// Nothing more can come.
  bool Whole() const { return whole_ || (has_number_ && has_name_ && has_date_ && has_time_); }

  /// Valid UTF-8 without control characters. Empty when withheld or not known.
  const std::string& Name() const { return name_; }
  const std::string& Number() const { return number_; }

private:
  void AddHex(const std::string& message);

  std::string name_;
  std::string number_;
  bool begun_ = false;
  bool whole_ = false;
  bool has_name_ = false;
  bool has_number_ = false;
  bool has_date_ = false;
  bool has_time_ = false;
};

} // namespace kelmio

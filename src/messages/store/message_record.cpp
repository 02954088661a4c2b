#include "messages/store/message_record.h"

#include <cmath>

#include "core/ini_document.h"
#include "core/text.h"

namespace kelmio {
namespace {

std::int64_t RoundedQuotient(std::int64_t number, std::int64_t divisor) {
  return std::llrint(static_cast<double>(number) / static_cast<double>(divisor)); // ties to even
}

// The numbers of the first three parts; nothing when there are fewer.
std::optional<std::array<std::int32_t, 3>> Parts(std::string_view text, char separator) {
  std::array<std::int32_t, 3> parts{};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::size_t end = text.find(separator);
    if (end == std::string_view::npos && i + 1 < parts.size())
      return std::nullopt;
    parts[i] = LeadingNumber32(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return parts;
}

} // namespace

MessageRecord ReadMessageRecord(const IniDocument& index, const std::string& file_name) {
  const auto text = [&](std::string_view key) { return std::string(index.Read(file_name, key)); };
  MessageRecord record;
  record.FileName = file_name;
  record.Name = text("Name");
  record.Number = text("Number");
  record.Date = ParseDate(text("Date")).value_or(DateValue{});
  record.Time = ParseTime(text("Time")).value_or(DateValue{});
  record.DateTime = MakeDateTime(text("Date"), text("Time")).value_or(DateValue{});
  record.Device = text("Device");
  record.Mode = text("Mode");
  record.Size = LeadingNumber32(text("Size"));
  record.Length = LeadingNumber32(text("Length"));
  record.Read = BooleanOfText(text("Read")).value_or(false);
  return record;
}

std::optional<DateValue> MakeDateTime(std::string_view date_text, std::string_view time_text) {
  const auto date = Parts(date_text, '/');
  const auto time = Parts(time_text, ':');
  if (!date || !time)
    return std::nullopt;
  const auto [month, day, year] = *date;
  std::optional<DateValue> value = DateFromParts(year, month, day);
  if (value)
    value->seconds += (*time)[0] * kSecondsPerHour + (*time)[1] * kSecondsPerMinute + (*time)[2];
  return value;
}

std::string FormatTime(std::int64_t milliseconds) {
  constexpr std::int64_t kMillisecondsPerSecond = 1000;
  std::int64_t seconds = RoundedQuotient(milliseconds, kMillisecondsPerSecond);
  std::int64_t minutes = 0;
  std::int64_t hours = 0;
  if (seconds > kSecondsPerHour) {
    hours = RoundedQuotient(seconds, kSecondsPerHour);
    minutes = RoundedQuotient(seconds - hours * kSecondsPerHour, kSecondsPerMinute);
    seconds -= minutes * kSecondsPerMinute + hours * kSecondsPerHour;
  } else if (seconds > kSecondsPerMinute) {
    minutes = RoundedQuotient(seconds, kSecondsPerMinute);
    seconds -= minutes * kSecondsPerMinute;
  }
  return TwoDigits(hours) + ":" + TwoDigits(minutes) + ":" + TwoDigits(seconds);
}

} // namespace kelmio

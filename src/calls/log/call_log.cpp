#include "calls/log/call_log.h"

#include <algorithm>

#include "core/date_time.h"
#include "core/ini_document.h"
#include "core/ini_text.h"
#include "core/mIni.h"

namespace kelmio {
namespace {

constexpr std::string_view kSection = "Calls";
constexpr char kSeparator = '|';

CallLogFields Split(std::string_view value) {
  CallLogFields fields;
  for (std::string& field : fields) {
    const std::size_t end = std::min(value.find(kSeparator), value.size());
    field = value.substr(0, end);
    value.remove_prefix(std::min(end + 1, value.size()));
  }
  return fields;
}

} // namespace

CallLog::CallLog(std::string call_log_file, const Clock& clock, TroubleSink trouble)
    : file_(std::move(call_log_file)), clock_(clock), trouble_(std::move(trouble)) {}

void CallLog::LogNewCall(std::string_view name, std::string_view number) {
  const std::string key = FormatDdmmyyhhnnss(clock_.Now());
  std::string value(name);
  value += kSeparator;
  value += number;
  value += kSeparator + FormatDayMonthShortYear(clock_.Now());
  value += kSeparator + FormatTimeAmPm(clock_.Now());
  if (!mIni::IniWrite(kSection, key, value, file_))
    trouble_(NotWritten(file_));
}

std::vector<std::string> CallLog::Keys() const {
  return mIni::IniSectionKeys(kSection, file_);
}

CallLogFields CallLog::Entry(std::string_view key) const {
  return Split(mIni::IniRead(kSection, key, file_));
}

std::vector<CallLogEntry> CallLog::Entries() const {
  const IniDocument document = IniDocument::Load(file_);
  std::vector<CallLogEntry> entries;
  for (std::string& key : document.SectionKeys(kSection))
    if (!key.empty()) {
      CallLogFields fields = Split(document.Read(kSection, key));
      entries.push_back({std::move(key), std::move(fields)});
    }
  return entries;
}

void CallLog::DeleteEntry(const std::string& key) {
  DeleteEntries({key});
}

void CallLog::DeleteEntries(const std::vector<std::string>& keys) {
  const bool written = mIni::IniChange(file_, [&](IniText& text) { text.DeleteKeys(kSection, keys); });
  if (!written)
    trouble_(NotWritten(file_));
}

} // namespace kelmio

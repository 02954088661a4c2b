#include "shell/line_notice.h"

#include <algorithm>

#include "controls/utf8.h"
#include "core/date_time.h"

namespace kelmio {

namespace {

constexpr std::string_view kEllipsis = "\u2026";

std::size_t CharactersOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), BeginsCharacter));
}

/// The whole text, or its beginning and an ellipsis.
std::string Shortened(const std::string& text, std::size_t characters) {
  if (CharactersOf(text) <= characters)
    return text;
  std::size_t count = 0;
  const auto end =
      std::find_if(text.begin(), text.end(), [&](char c) { return BeginsCharacter(c) && ++count == characters; });
  return std::string(text.begin(), end).append(kEllipsis);
}

} // namespace

void LineNotice::Take(const LineStatus& status) {
  // Lines tell of a call as it comes, so the wall clock has its time.
  if (status.last_call && status.last_call != last_call_) {
    constexpr std::size_t kHoursAndMinutes = 5;
    const LocalDateTime now = clock_.Now();
    last_call_text_ = "Last call: " + FormatMonthDayYear(now) + " " + FormatTime24(now).substr(0, kHoursAndMinutes);
  }
  if (status.last_call)
    last_call_ = status.last_call;
  status_ = status;
}

std::string LineNotice::Tip(const std::string& caption, std::size_t characters) const {
  if (status_.health == LineStatus::Health::Off)
    return caption;
  const std::string call = status_.last_call ? "\n" + last_call_text_ : "";
  const std::size_t taken = CharactersOf(caption) + CharactersOf(call) + 1;
  if (status_.words.empty() || taken >= characters)
    return caption + call;
  return caption + "\n" + Shortened(status_.words, characters - taken) + call;
}

} // namespace kelmio

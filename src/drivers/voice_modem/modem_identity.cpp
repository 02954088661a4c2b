#include "drivers/voice_modem/modem_identity.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <vector>

#include "core/text.h"
#include "drivers/shown_text.h"

namespace kelmio {
namespace {

using Seconds = ModemClock::Seconds;

constexpr int kTries = 3;
constexpr Seconds kTryLimit{1};
constexpr Seconds kResetLimit{3};
// A modem that has been reset takes this long before it listens again.
constexpr Seconds kResetSettles{1};
constexpr Seconds kCommandLimit{5};
constexpr Seconds kBeforeSecondTry{0.2};
constexpr std::string_view kVoiceClass = "8";
constexpr std::string_view kBlanks = " \t";
constexpr std::size_t kLongestModel = 60;

/// Whether the answer to +FCLASS=?, such as "(0,1,2,8)" or "0,1,1.0,8", names the voice class.
bool NamesVoiceClass(const std::vector<std::string>& lines) {
  for (std::string_view line : lines) {
    if (const std::size_t colon = line.find(':'); colon != std::string_view::npos)
      line.remove_prefix(colon + 1);
    while (!line.empty()) {
      const std::size_t comma = std::min(line.find(','), line.size());
      if (Trimmed(line.substr(0, comma), " \t()") == kVoiceClass)
        return true;
      line.remove_prefix(std::min(comma + 1, line.size()));
    }
  }
  return false;
}

/// Some say OK to +FCLASS=8 and stay in class 0. One that doesn't tell its class is believed.
bool StaysInDataClass(ModemLink& link) {
  const std::vector<std::string> lines = link.Command("AT+FCLASS?", kCommandLimit).lines;
  return std::any_of(lines.begin(), lines.end(), [](std::string_view line) {
    if (const std::size_t colon = line.find(':'); colon != std::string_view::npos)
      line.remove_prefix(colon + 1);
    return Trimmed(line, kBlanks) == "0";
  });
}

/// The number of the row of +VLS=? whose label is `label`, as in `1,"T",0B8433C1,...`.
std::optional<int> DeviceLabelled(const std::vector<std::string>& lines, std::string_view label) {
  const std::string quoted = ",\"" + std::string(label) + "\"";
  for (const std::string& line : lines) {
    const std::size_t at = line.find(quoted);
    if (at == std::string::npos)
      continue;
    const std::size_t begin = line.find_last_not_of("0123456789", at - 1) + 1;
    int number = 0;
    const auto [end, error] = std::from_chars(line.data() + begin, line.data() + at, number);
    if (error == std::errc() && end == line.data() + at)
      return number;
  }
  return std::nullopt;
}

/// The first line that says more than a number: makers answer ATI0 with a speed.
std::string ModelOf(ModemLink& link) {
  for (const char* const question : {"ATI3", "AT+GMM", "AT+FMM?", "ATI0"}) {
    const CommandResult answer = link.Command(question, kCommandLimit);
    for (const std::string& line : answer.lines) {
      const std::string_view text = Trimmed(line, kBlanks);
      if (text.find_first_not_of("0123456789") != std::string_view::npos)
        return ShownText(text, kLongestModel);
    }
    if (!answer.final)
      break;
  }
  return {};
}

} // namespace

bool EnterVoiceClass(ModemLink& link, const ModemClock& clock) {
  const auto enter = [&link] { return link.Command("AT+FCLASS=8", kCommandLimit).Ok() && !StaysInDataClass(link); };
  if (enter())
    return true;
  link.Wait(clock.Now() + kBeforeSecondTry);
  return enter();
}

void ResetModem(ModemLink& link, const ModemClock& clock) {
  link.Command("ATZ", kResetLimit);
  const Seconds settled = clock.Now() + kResetSettles;
  while (!link.Gone() && clock.Now() < settled)
    link.Wait(settled);
  // Without auto answer, which would answer as a data modem.
  if (!link.Command("ATE0V1Q0X4S0=0", kCommandLimit).Ok())
    link.Command("ATE0V1Q0S0=0", kCommandLimit);
}

ModemIdentity IdentifyModem(ModemLink& link, const ModemClock& clock) {
  ModemIdentity identity;
  bool answers = false;
  for (int i = 0; i < kTries && !answers && !link.Gone(); ++i)
    answers = link.Command("ATE0V1Q0", kTryLimit).Ok();
  if (!answers)
    return identity;
  ResetModem(link, clock);
  identity.kind = ModemKind::Data;
  identity.model = ModelOf(link);
  std::vector<std::string> classes = link.Command("AT+FCLASS=?", kCommandLimit).lines;
  if (classes.empty()) // not a word on it: what it is said to be from now on shouldn't hang on a slip
    classes = link.Command("AT+FCLASS=?", kCommandLimit).lines;
  if (!NamesVoiceClass(classes) || !EnterVoiceClass(link, clock))
    return link.Gone() ? ModemIdentity{} : identity;

  identity.kind = ModemKind::Voice;
  std::vector<VoiceFormatRow> rows;
  for (const std::string& line : link.Command("AT+VSM=?", kCommandLimit).lines)
    if (const auto row = ReadVoiceFormatRow(line))
      rows.push_back(*row);
  identity.format = ChooseVoiceFormat(rows);
  const std::vector<std::string> devices = link.Command("AT+VLS=?", kCommandLimit).lines;
  identity.line_device = DeviceLabelled(devices, "T").value_or(identity.line_device);
  identity.joined_device = DeviceLabelled(devices, "LT").value_or(identity.joined_device);
  return link.Gone() ? ModemIdentity{} : identity;
}

} // namespace kelmio

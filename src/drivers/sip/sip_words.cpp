#include "drivers/sip/sip_words.h"

#include <cerrno>
#include <ctime>
#include <system_error>

namespace kelmio {

std::string ReachableInWords(const SipSettings& settings, std::uint16_t port) {
  const bool any = settings.listen.host == "0.0.0.0" || settings.listen.host == "::";
  const std::string where = any ? "on port " + std::to_string(port) : "at " + ToText({settings.listen.host, port});
  switch (CallersOf(settings)) {
  case SipCallers::Computer:
    return "Reachable " + where + " by programs on this computer.";
  case SipCallers::Network:
    return "Reachable " + where + " from the local network.";
  case SipCallers::Everyone:
    return "Reachable " + where + " by everyone whom the network lets through.";
  }
  return {};
}

std::string HindranceInWords(const ListenAddress& address, int error) {
  const std::string port = "Port " + std::to_string(address.port);
  switch (error) {
  case EADDRINUSE:
    return port + " is taken by another program.";
  case EACCES:
  case EPERM:
    return port + " may not be opened by a user's program.";
  case EADDRNOTAVAIL:
    return address.host + " is no address of this computer.";
  default:
    return ToText(address) + " can't be opened: " + std::generic_category().message(error) + ".";
  }
}

std::string MomentInWords(std::chrono::system_clock::time_point moment, std::chrono::system_clock::time_point now) {
  const std::time_t then = std::chrono::system_clock::to_time_t(moment);
  const std::time_t today = std::chrono::system_clock::to_time_t(now);
  std::tm local{};
  std::tm local_today{};
  localtime_r(&then, &local);
  localtime_r(&today, &local_today);
  const bool same_day = local.tm_year == local_today.tm_year && local.tm_yday == local_today.tm_yday;
  char text[32] = "";
  std::strftime(text, sizeof(text), same_day ? "%H:%M" : "%d %b %H:%M", &local);
  return text;
}

std::string AccountStateInWords(const SipAccount& account, const LineStatus& status,
                                std::chrono::system_clock::time_point now) {
  const std::string since = MomentInWords(status.since, now);
  std::string words;
  switch (status.health) {
  case LineStatus::Health::Off:
    words = status.words.empty() ? "Switched off." : status.words;
    break;
  case LineStatus::Health::Trying:
    words = status.words;
    break;
  case LineStatus::Health::Ready:
    words = "Reachable as " + account.user + " at " + account.server + " since " + since + ". " + status.words;
    break;
  case LineStatus::Health::Trouble:
    words = status.words + " Calls have not come through since " + since + ".";
    break;
  }
  if (status.last_call)
    words += " The last call began at " + MomentInWords(*status.last_call, now) + ".";
  return words;
}

} // namespace kelmio

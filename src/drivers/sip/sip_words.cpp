#include "drivers/sip/sip_words.h"

#include <cerrno>
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

} // namespace kelmio

#include "drivers/sip/sip_settings.h"

#include <arpa/inet.h>

#include <charconv>

namespace kelmio {

namespace {

constexpr std::string_view kSection = "SIP";
constexpr std::string_view kSectionText =
    "; The SIP line: calls that come over the network.\n"
    "; Listen: the address and port on which calls are taken, over UDP and TCP.\n"
    ";   127.0.0.1:5060     only programs on this computer can call\n"
    ";   192.168.1.20:5060  (this computer's own address) whoever reaches it there, as a rule the local network\n"
    ";   0.0.0.0:5060       on every network this computer is connected to\n"
    "; RingPeriod: milliseconds between two rings that are counted; a caller sends no rings of its own.\n"
    "[SIP]\n"
    "Listen=127.0.0.1:5060\n"
    "RingPeriod=6000\n";

// A shorter period would count rings faster than anyone could react, a longer one would never reach a second.
constexpr long kShortestRingPeriod = 20;
constexpr long kLongestRingPeriod = 60'000;

template <typename Number> std::optional<Number> WholeNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return number;
}

} // namespace

std::optional<ListenAddress> ParseListenAddress(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos)
    return std::nullopt;
  const auto port = WholeNumber<std::uint16_t>(text.substr(colon + 1));
  std::string_view host = text.substr(0, colon);
  const bool brackets = host.size() > 2 && host.front() == '[' && host.back() == ']';
  if (brackets)
    host = host.substr(1, host.size() - 2);

  const std::string host_text(host);
  in6_addr unused{};
  if (!port || inet_pton(brackets ? AF_INET6 : AF_INET, host_text.c_str(), &unused) != 1)
    return std::nullopt;
  return ListenAddress{host_text, *port};
}

std::string ToText(const ListenAddress& address) {
  const bool v6 = address.host.find(':') != std::string::npos;
  return (v6 ? "[" + address.host + "]" : address.host) + ":" + std::to_string(address.port);
}

SipSettings ReadSipSettings(LinesFile& file) {
  file.EnsureSection(kSection, kSectionText);
  SipSettings settings;

  const std::string listen = file.Read(kSection, "Listen");
  if (const auto address = ParseListenAddress(listen))
    settings.listen = *address;
  else if (!listen.empty())
    settings.notes.push_back("SIP line: \"" + listen + "\" is no address with a port; " + ToText(settings.listen) +
                             " is used");

  const std::string period = file.Read(kSection, "RingPeriod");
  const auto milliseconds = WholeNumber<long>(period);
  if (milliseconds && *milliseconds >= kShortestRingPeriod && *milliseconds <= kLongestRingPeriod)
    settings.ring_period = std::chrono::milliseconds(*milliseconds);
  else if (!period.empty())
    settings.notes.push_back("SIP line: \"" + period + "\" is no usable ring period; " +
                             std::to_string(settings.ring_period.count()) + " ms is used");

  settings.device_id = file.DeviceNumber(kSection);
  return settings;
}

} // namespace kelmio

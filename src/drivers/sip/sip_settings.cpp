#include "drivers/sip/sip_settings.h"

#include <arpa/inet.h>

#include <algorithm>
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
    "; Allow: whose calls are taken of those that reach the address\n"
    ";   network   only those that come from a private address, as local networks use them\n"
    ";   everyone\n"
    "; RingPeriod: milliseconds between two rings that are counted; a caller sends no rings of its own.\n"
    "; Codecs: the codings of sound that are used, in the order in which a dialled call offers them.\n"
    "[SIP]\n"
    "Listen=127.0.0.1:5060\n"
    "Allow=everyone\n"
    "RingPeriod=6000\n"
    "Codecs=opus,G722,PCMA,PCMU\n";

constexpr std::string_view kAllowNetwork = "network";
constexpr std::string_view kAllowEveryone = "everyone";
constexpr const char* kAnyAddress = "0.0.0.0";

template <typename Number> std::optional<Number> WholeNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return number;
}

bool EqualNames(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char left, char right) { return lower(left) == lower(right); });
}

bool IsLoopback(const ListenAddress& address) {
  return address.host == "::1" || address.host.starts_with("127.");
}

} // namespace

std::optional<std::vector<AudioCoding>> ParseCodings(std::string_view text) {
  std::vector<AudioCoding> codings;
  while (!text.empty()) {
    const std::size_t comma = std::min(text.find(','), text.size());
    std::string_view name = text.substr(0, comma);
    text.remove_prefix(std::min(comma + 1, text.size()));
    while (!name.empty() && name.front() == ' ')
      name.remove_prefix(1);
    while (!name.empty() && name.back() == ' ')
      name.remove_suffix(1);
    const auto* const known = std::find_if(kAllCodings.begin(), kAllCodings.end(),
                                           [&](AudioCoding coding) { return EqualNames(NameOf(coding), name); });
    if (known == kAllCodings.end())
      return std::nullopt;
    if (std::find(codings.begin(), codings.end(), *known) == codings.end())
      codings.push_back(*known);
  }
  return codings.empty() ? std::nullopt : std::optional(codings);
}

std::string ToText(const std::vector<AudioCoding>& codings) {
  std::string text;
  for (const AudioCoding coding : codings)
    text += (text.empty() ? "" : ",") + std::string(NameOf(coding));
  return text;
}

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

SipCallers CallersOf(const SipSettings& settings) {
  if (IsLoopback(settings.listen))
    return SipCallers::Computer;
  return settings.allow == SipAllow::Network ? SipCallers::Network : SipCallers::Everyone;
}

void SetCallers(SipSettings& settings, SipCallers callers) {
  if (callers == CallersOf(settings))
    return;
  settings.listen.host = callers == SipCallers::Computer ? ListenAddress{}.host : kAnyAddress;
  settings.allow = callers == SipCallers::Network ? SipAllow::Network : SipAllow::Everyone;
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
  if (milliseconds && *milliseconds >= kShortestRingPeriod.count() && *milliseconds <= kLongestRingPeriod.count())
    settings.ring_period = std::chrono::milliseconds(*milliseconds);
  else if (!period.empty())
    settings.notes.push_back("SIP line: \"" + period + "\" is no usable ring period; " +
                             std::to_string(settings.ring_period.count()) + " ms is used");

  const std::string allow = file.Read(kSection, "Allow");
  if (EqualNames(allow, kAllowNetwork)) {
    settings.allow = SipAllow::Network;
  } else if (!allow.empty() && !EqualNames(allow, kAllowEveryone)) {
    // Whoever meant to shut someone out doesn't find the door open for a slip of the pen.
    settings.allow = SipAllow::Network;
    settings.notes.push_back("SIP line: \"" + allow + "\" is no one to allow; " + std::string(kAllowNetwork) +
                             " is used");
  }

  const std::string codecs = file.Read(kSection, "Codecs");
  if (const auto codings = ParseCodings(codecs))
    settings.codings = *codings;
  else if (!codecs.empty())
    settings.notes.push_back("SIP line: \"" + codecs + "\" holds a codec that is not known; " +
                             ToText(settings.codings) + " is used");

  settings.device_id = file.DeviceNumber(kSection);
  return settings;
}

bool WriteSipSettings(const LinesFile& file, const SipSettings& settings) {
  return file.Write(kSection,
                    {{"Listen", ToText(settings.listen)},
                     {"Allow", std::string(settings.allow == SipAllow::Network ? kAllowNetwork : kAllowEveryone)},
                     {"RingPeriod", std::to_string(settings.ring_period.count())},
                     {"Codecs", ToText(settings.codings)}});
}

} // namespace kelmio

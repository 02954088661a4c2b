#include "drivers/sip/caller_claims.h"

#include <algorithm>
#include <optional>

namespace kelmio {

namespace {

constexpr std::string_view kSeparators = " -/.()";

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// As a number is dialled; the separators between its digits are gone.
std::string DigitsOf(std::string_view text) {
  std::string digits(text);
  std::erase_if(digits, [](char c) { return kSeparators.find(c) != std::string_view::npos; });
  return digits;
}

bool IsNumber(std::string_view text) {
  std::string digits = DigitsOf(text);
  if (digits.starts_with('+'))
    digits.erase(0, 1);
  constexpr std::size_t kShortestNumber = 2;
  return digits.size() >= kShortestNumber && std::all_of(digits.begin(), digits.end(), IsDigit);
}

CallerIdentity ReadAddress(const sip_addr& address) {
  return ReadCallerIdentity(ToView(address.dname), UserOf(address.uri, address.auri));
}

/// One that holds a number counts for more than one that doesn't: some registrars assert both.
std::optional<CallerIdentity> Asserted(const sip_msg& invite) {
  std::optional<CallerIdentity> best;
  const auto look = [](const sip_hdr* header, const sip_msg*, void* arg) {
    auto& found = *static_cast<std::optional<CallerIdentity>*>(arg);
    sip_addr address{};
    if (sip_addr_decode(&address, &header->val) != 0)
      return false;
    const CallerIdentity caller = ReadAddress(address);
    if (!found || (!IsNumber(found->number) && IsNumber(caller.number)))
      found = caller;
    return false;
  };
  sip_msg_hdr_apply(&invite, true, SIP_HDR_P_ASSERTED_IDENTITY, look, &best);
  return best;
}

bool WantsPrivacy(const sip_msg& invite) {
  const sip_hdr* header = sip_msg_hdr(&invite, SIP_HDR_PRIVACY);
  std::string_view words = header ? ToView(header->val) : std::string_view{};
  while (!words.empty()) {
    const std::size_t end = std::min(words.find_first_of("; "), words.size());
    const std::string_view word = words.substr(0, end);
    if (word == "id" || word == "user" || word == "header")
      return true;
    words.remove_prefix(std::min(end + 1, words.size()));
  }
  return false;
}

bool SaysNobody(const CallerIdentity& from, std::string_view user) {
  return from.number.empty() && !user.empty(); // all that the user part said was that there is none
}

} // namespace

std::string_view UserOf(const uri& address, const pl& whole) {
  if (pl_strcasecmp(&address.scheme, "tel") != 0)
    return ToView(address.user);
  const std::string_view text = ToView(whole);
  return text.substr(std::min(text.size(), text.find(':') + 1));
}

CallerIdentity CallerOfAccount(const sip_msg& invite) {
  const std::string_view user = UserOf(invite.from.uri, invite.from.auri);
  const CallerIdentity from = ReadCallerIdentity(ToView(invite.from.dname), user);
  if (WantsPrivacy(invite) || SaysNobody(from, user))
    return {};
  CallerIdentity caller = Asserted(invite).value_or(from);
  if (caller.name.empty())
    caller.name = from.name;
  // Some providers put the number where the name belongs, and their own word where the number does.
  if (IsNumber(caller.name) && !IsNumber(caller.number))
    caller.number = DigitsOf(caller.name);
  if (DigitsOf(caller.name) == DigitsOf(caller.number))
    caller.name.clear();
  return caller;
}

std::string ForwarderOf(const sip_msg& invite) {
  const sip_hdr* forwarded = sip_msg_xhdr(&invite, "Diversion");
  // The first entry of a history is who was called at first; with no second one nothing was forwarded.
  if (!forwarded && sip_msg_hdr_count(&invite, SIP_HDR_HISTORY_INFO) > 1)
    forwarded = sip_msg_hdr(&invite, SIP_HDR_HISTORY_INFO);
  sip_addr address{};
  if (!forwarded || sip_addr_decode(&address, &forwarded->val) != 0)
    return {};
  return ReadAddress(address).number;
}

} // namespace kelmio

#include "drivers/sip/session_timer.h"

#include <charconv>

namespace kelmio {

namespace {

constexpr const char* kTimer = "timer";
// RFC 4028 section 4: no call is to be confirmed more often.
constexpr std::uint32_t kShortest = 90;

bool IsOther(const sip_hdr* header, const sip_msg*, void*) {
  return pl_strcasecmp(&header->val, kTimer) != 0;
}

} // namespace

const sip_hdr* UnknownRequirement(const sip_msg& invite) {
  return sip_msg_hdr_apply(&invite, true, SIP_HDR_REQUIRE, &IsOther, nullptr);
}

std::string SessionTimerLines(const sip_msg& invite) {
  const sip_hdr* wanted = sip_msg_hdr(&invite, SIP_HDR_SESSION_EXPIRES);
  const bool able = sip_msg_hdr_has_value(&invite, SIP_HDR_SUPPORTED, kTimer) ||
                    sip_msg_hdr_has_value(&invite, SIP_HDR_REQUIRE, kTimer);
  if (!wanted || !able)
    return {};
  std::uint32_t seconds = 0;
  std::from_chars(wanted->val.p, wanted->val.p + wanted->val.l, seconds);
  pl refresher{};
  const bool left_to_us =
      msg_param_decode(&wanted->val, "refresher", &refresher) == 0 && pl_strcasecmp(&refresher, "uas") == 0;
  // A peer that has gone is found by its silence, so this side confirms nothing.
  if (left_to_us || seconds < kShortest)
    return {};
  return "Require: timer\r\nSession-Expires: " + std::to_string(seconds) + ";refresher=uac\r\n";
}

} // namespace kelmio

// Calls that a peer wants confirmed from time to time (RFC 4028).
#pragma once

#include <string>

#include "drivers/sip/libre.h"

namespace kelmio {

/// Header lines for the answer to an INVITE: the peer that asks for a session timer gets it, as long as it confirms the
/// call by itself, which it does with a re-INVITE. Empty when there is nothing to say. Pure code.
std::string SessionTimerLines(const sip_msg& invite);

/// What the caller insists on (RFC 3261 20.32) and isn't there; nothing when all is there.
const sip_hdr* UnknownRequirement(const sip_msg& invite);

} // namespace kelmio

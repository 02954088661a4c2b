// Answers to requests that are no calls.
#pragma once

#include "drivers/sip/libre.h"

namespace kelmio {

/// The methods that the line knows, as a header line.
inline constexpr char kAllowHeader[] = "Allow: INVITE, ACK, BYE, CANCEL, OPTIONS, INFO\r\n";

/// Answers any request that reached no call: what the line can do to OPTIONS, a refusal to all else. Engine
/// thread only.
void ReplyOutsideCalls(sip& stack, const sip_msg& request);

} // namespace kelmio

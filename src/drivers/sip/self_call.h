// Asks a SIP line on this computer whether it answers.
#pragma once

#include <chrono>

#include "drivers/sip/sip_settings.h"

namespace kelmio {

/// Sends an OPTIONS request (RFC 3261 section 11) over UDP to the address and waits for its answer; "every address" is
/// asked at its loopback. True when it is 200. Blocks for `limit` at most. Any thread but the line's own.
bool AnswersOptions(const ListenAddress& address, std::chrono::milliseconds limit);

} // namespace kelmio

// What the SIP line tells its user about its address.
#pragma once

#include <cstdint>
#include <string>

#include "drivers/sip/sip_settings.h"

namespace kelmio {

/// Where an open line is reached, and by whom. `port` is the bound one. One sentence.
std::string ReachableInWords(const SipSettings& settings, std::uint16_t port);

/// Why an address can't be opened. `error` is an error number of the system. One sentence.
std::string HindranceInWords(const ListenAddress& address, int error);

} // namespace kelmio

// What the SIP line tells its user about its address.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "drivers/sip/sip_settings.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// Where an open line is reached, and by whom. `port` is the bound one. One sentence.
std::string ReachableInWords(const SipSettings& settings, std::uint16_t port);

/// Why an address can't be opened. `error` is an error number of the system. One sentence.
std::string HindranceInWords(const ListenAddress& address, int error);

/// A moment as a user reads it: the time, and the day when it isn't today. "08:15", or "21 Nov 08:15".
std::string MomentInWords(std::chrono::system_clock::time_point moment, std::chrono::system_clock::time_point now);

/// How a line with an account stands, in whole sentences.
std::string AccountStateInWords(const SipAccount& account, const LineStatus& status,
                                std::chrono::system_clock::time_point now);

} // namespace kelmio

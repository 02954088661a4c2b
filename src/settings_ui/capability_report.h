// What a line, its address and its telephone set can do, as a text for the eye.
#pragma once

#include <string>

#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// One line of text for each value, ended by CR LF. The values stand in one column where a tab is ten characters wide;
/// words are written in decimal.
std::string CapabilityReport(const LineCaps& caps);

} // namespace kelmio

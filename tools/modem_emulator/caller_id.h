#pragma once

#include <string>
#include <vector>

namespace kelmio::emulated {

// What the exchange says of the caller, and in which of the forms that modems are known to print it.
struct CallerId {
  std::string number = "8475550001";
  std::string name = "U.S.ROBOTICS";
  std::string date = "1015"; // month and day
  std::string time = "2038";
  // One of CallerIdForms(); "none" for a line without the service.
  std::string form = "spaced";
};

std::vector<std::string> CallerIdForms();

// The lines of the report. None for the forms "none" and "checksum", or one that isn't known.
std::vector<std::string> CallerIdLines(const CallerId& caller_id);

// The report as one line of hex digits: message type, length, data, checksum.
std::string CallerIdHex(const CallerId& caller_id);

} // namespace kelmio::emulated

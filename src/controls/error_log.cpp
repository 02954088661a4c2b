#include "controls/error_log.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <initializer_list>

namespace kelmio {

namespace {

constexpr const char* kFileName = "ErrorLog.txt";

/// The first of the variables that is set; systems spell the same thing differently.
std::string Environment(std::initializer_list<const char*> names) {
  for (const char* name : names)
    if (const char* value = std::getenv(name); value != nullptr && *value != '\0')
      return value;
  return {};
}

std::string Moment(const LocalDateTime& now) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", now.year, now.month, now.day, now.hour,
                now.minute, now.second);
  return text.data();
}

/// One failure stays one line of the file.
std::string InOneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char character) { return character == '\n' || character == '\r'; }, ' ');
  return text;
}

} // namespace

void ErrorLog::Report(const ControlError& error, bool show) const {
  const std::string number = std::to_string(error.number);
  std::ofstream file(house_.folder + kFileName, std::ios::app);
  file << Moment(house_.clock.Now()) << '\t' << Environment({"username", "USERNAME", "USER"}) << '\t'
       << Environment({"computername", "COMPUTERNAME", "HOSTNAME"}) << '\t' << house_.version << '\t' << number << '\t'
       << InOneLine(error.description) << '\t' << error.module << '\t' << error.function << '\n';
  file.close();
  if (show)
    house_.boxes.Show("Error occured: " + number + "\nDescription: " + error.description + "\nModule: " + error.module +
                          "\nFunction: " + error.function,
                      house_.program + " - ERROR", BoxButtons::Ok, BoxIcon::Stop, 1);
}

} // namespace kelmio

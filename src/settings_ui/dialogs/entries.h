// What users type into the dialogs of lines, read and told of in plain words.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

/// Pure functions. Blanks around an entry are left aside.
namespace kelmio {

/// An entry as it is used, or else why it can't be.
struct Entry {
  std::string text;
  std::string complaint{}; // a whole sentence; empty when the text can be used
};

/// A name or address with a port or none, an IPv6 address in brackets or bare; "sip:" in front is left out. An empty
/// one is none. `what` begins the complaint: "The server".
Entry HostEntry(std::string_view text, const std::string& what);

/// Nothing when the text is no whole number from `least` to `most`.
std::optional<long> NumberIn(std::string_view text, long least, long most);
/// "A number from 1 to 9."
std::string RangeInWords(long least, long most);
/// "`what` is a number from 1 to 9."
std::string NotInRange(const std::string& what, long least, long most);

/// The time between two rings that a SIP line counts, in milliseconds.
std::optional<std::chrono::milliseconds> RingPeriodIn(std::string_view text);
std::string NoRingPeriod();

} // namespace kelmio

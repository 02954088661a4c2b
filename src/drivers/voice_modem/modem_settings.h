// What a modem line is told by `Lines.ini`.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "drivers/lines_file.h"

namespace kelmio {

/// Gains as modems count them: this one is nominal, 0 leaves it to the modem where it can.
inline constexpr int kNominalGain = 128;
inline constexpr int kMostGain = 255;

/// Rings of a line on which several numbers ring differently.
enum class RingKind : std::uint8_t { Every, A, B, C, D, E };

struct ModemSettings {
  std::string port;    // path of the device, by its serial number where it has one: /dev/serial/by-id/...
  std::string country; // two letters of ISO 3166; empty: unknown, and the modem keeps its own
  int play_gain = kNominalGain;
  int record_gain = kNominalGain;
  RingKind ring = RingKind::Every; // calls with other rings are left to ring
  bool wait_for_dial_tone = true;  // off behind a telephone system that has none
  std::string init;                // one more command at each start, such as AT+GCI=B5; empty: none
  long device_id = -1;
  /// Plain words on values that could not be used; for the status pane.
  std::vector<std::string> notes;
  bool operator==(const ModemSettings&) const = default;
};

/// Reads the section of one modem. A value that makes no sense falls back to its default, with a note. `device_id` is
/// the number of the line `section`.
ModemSettings ReadModemSettings(LinesFile& file, const std::string& section);

/// Makes the section if need be, and writes what a user can choose. False when the file can't be written.
bool WriteModemSettings(LinesFile& file, const std::string& section, const ModemSettings& settings);

enum class ModemKind : std::uint8_t {
  Silent, // no answer to any command: no modem, or one that is stuck
  Data,   // no voice class
  Voice,
};

/// What was found out about a modem when it was asked, so that it need not be asked again.
struct KnownModem {
  ModemKind kind = ModemKind::Silent;
  std::string model; // in words; may be empty
};
KnownModem ReadKnownModem(const LinesFile& file, const std::string& section);
void WriteKnownModem(const LinesFile& file, const std::string& section, const KnownModem& modem);

/// The countries whose tones and modem settings are known.
struct ModemCountry {
  const char* code; // of ISO 3166
  const char* name; // in English
  const char* t35;  // two hexadecimal digits of ITU-T T.35, as +GCI takes them
};
const std::vector<ModemCountry>& ModemCountries();

} // namespace kelmio

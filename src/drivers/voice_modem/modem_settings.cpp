#include "drivers/voice_modem/modem_settings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace kelmio {
namespace {

constexpr std::array<std::string_view, 6> kRingNames{"every", "A", "B", "C", "D", "E"};

// In the order of `ModemKind`.
constexpr std::array<std::string_view, 3> kKindNames{"none", "data", "voice"};

/// What a user can choose, as it stands below the section's header.
constexpr std::string_view kSectionText =
    "; A voice modem on a telephone line.\n"
    "; Port: the device; a name under /dev/serial/by-id stays the same wherever it is plugged in\n"
    "; Country: two letters (ISO 3166), for the tones and rings of the exchange; empty leaves it to the modem\n"
    "; PlayGain, RecordGain: 128 is nominal, 0 leaves it to the modem, 255 is most\n"
    "; Ring: every, or the letter of the one ring that is answered where several numbers ring differently\n"
    "; WaitForDialTone: no, behind a telephone system without a dial tone\n"
    "; Kind, Model: what the device said it is, when it was asked\n"
    "; Init: one more command for the modem at each start, such as AT+GCI=B5\n";

bool IsPrintable(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

int ReadGain(const LinesFile& file, const std::string& section, std::string_view key, ModemSettings& settings) {
  const std::string text = file.Read(section, key);
  int gain = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), gain);
  const bool number = error == std::errc() && end == text.data() + text.size();
  if (number && gain >= 0 && gain <= kMostGain)
    return gain;
  if (!text.empty())
    settings.notes.push_back(section + ": \"" + text + "\" is no gain; " + std::to_string(kNominalGain) + " is used");
  return kNominalGain;
}

} // namespace

// ITU-T T.35 annex A.
const std::vector<ModemCountry>& ModemCountries() {
  static const std::vector<ModemCountry> countries{
      {"AT", "Austria", "0A"},       {"AU", "Australia", "09"},   {"BE", "Belgium", "0F"},
      {"CA", "Canada", "20"},        {"CH", "Switzerland", "A6"}, {"CZ", "Czechia", "2E"},
      {"DE", "Germany", "42"},       {"DK", "Denmark", "31"},     {"ES", "Spain", "A0"},
      {"FI", "Finland", "3C"},       {"FR", "France", "3D"},      {"GB", "United Kingdom", "B4"},
      {"IE", "Ireland", "57"},       {"IT", "Italy", "59"},       {"JP", "Japan", "00"},
      {"NL", "Netherlands", "7B"},   {"NO", "Norway", "82"},      {"NZ", "New Zealand", "7E"},
      {"PL", "Poland", "8A"},        {"PT", "Portugal", "8B"},    {"SE", "Sweden", "A5"},
      {"US", "United States", "B5"}, {"ZA", "South Africa", "9F"}};
  return countries;
}

ModemSettings ReadModemSettings(LinesFile& file, const std::string& section) {
  ModemSettings settings;
  settings.port = file.Read(section, "Port");

  const std::string country = file.Read(section, "Country");
  const auto& countries = ModemCountries();
  if (std::any_of(countries.begin(), countries.end(), [&](const ModemCountry& each) { return country == each.code; }))
    settings.country = country;
  else if (!country.empty())
    settings.notes.push_back(section + ": \"" + country + "\" is no country that is known");

  settings.play_gain = ReadGain(file, section, "PlayGain", settings);
  settings.record_gain = ReadGain(file, section, "RecordGain", settings);

  const std::string ring = file.Read(section, "Ring");
  const auto* const kind = std::find(kRingNames.begin(), kRingNames.end(), ring);
  if (kind != kRingNames.end())
    settings.ring = static_cast<RingKind>(kind - kRingNames.begin());
  else if (!ring.empty())
    settings.notes.push_back(section + ": \"" + ring + "\" is no ring; every one is answered");

  settings.wait_for_dial_tone = file.Read(section, "WaitForDialTone") != "no";

  const std::string init = file.Read(section, "Init");
  const bool command = init.starts_with("AT") && IsPrintable(init);
  if (command)
    settings.init = init;
  else if (!init.empty())
    settings.notes.push_back(section + ": an init command begins with AT; this one is left out");

  settings.device_id = file.DeviceNumber(section);
  return settings;
}

bool WriteModemSettings(LinesFile& file, const std::string& section, const ModemSettings& settings) {
  file.EnsureSection(section, std::string(kSectionText) + "[" + section + "]\n");
  return file.Write(section, {{"Port", settings.port},
                              {"Country", settings.country},
                              {"PlayGain", std::to_string(settings.play_gain)},
                              {"RecordGain", std::to_string(settings.record_gain)},
                              {"Ring", std::string(kRingNames.at(static_cast<std::size_t>(settings.ring)))},
                              {"WaitForDialTone", settings.wait_for_dial_tone ? "yes" : "no"},
                              {"Init", settings.init}});
}

KnownModem ReadKnownModem(const LinesFile& file, const std::string& section) {
  const std::string kind = file.Read(section, "Kind");
  // A section that was written by hand is that of a voice modem: why else would it be there.
  const auto* const known = std::find(kKindNames.begin(), kKindNames.end(), kind);
  const auto index = known != kKindNames.end() ? known - kKindNames.begin() : std::ssize(kKindNames) - 1;
  return {static_cast<ModemKind>(index), file.Read(section, "Model")};
}

void WriteKnownModem(const LinesFile& file, const std::string& section, const KnownModem& modem) {
  file.Write(section,
             {{"Kind", std::string(kKindNames.at(static_cast<std::size_t>(modem.kind)))}, {"Model", modem.model}});
}

} // namespace kelmio

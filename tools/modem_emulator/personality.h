#pragma once

#include "modem_emulator/sound.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kelmio::emulated {

struct Codec {
  int id;
  std::string name; // as `+VSM=?` prints it
  int bits;
  Coding coding;
};

// What tells one family of modems from another.
struct Personality {
  std::string name;
  std::map<int, std::string> identity; // answers to ATIn; others are ERROR
  std::string maker;
  std::string model;
  std::string classes; // answer to `+FCLASS=?`
  char set = '+';      // what voice commands begin with; '\0' for a modem without voice
  std::vector<Codec> codecs;
  int first_codec = 0; // the codec at power-up
  std::vector<int> rates = {8000};
  std::string silence_range;
  int silence_level = 0; // `+VSD` at power-up
  int silence_time = 50;
  bool silence_level_0_only = false; // takes other levels but then keeps the time at 0
  bool one_silence_code = false;     // `s` for any silence, never `q`
  bool vcon = false;                 // VCON where others say OK in a call
  bool caller_id_packets = false;    // in voice class as <DLE>X ... <DLE>.
  bool plain_dtmf = false;           // a key is one code, without start and end
  char dtmf_end = 0x7E;
  bool prefixed = false;      // `+VSM: ` before information
  bool ringing_text = false;  // RINGING for ring-back instead of <DLE>r
  bool line_sense = false;    // knows `-STE`
  bool any_key_stops = false; // recording ends with any code
  bool dial_tone_in_record = true;
};

// conexant, softmodem, usr, silabs, rockwell, data. Nothing for any other name.
const Personality* FindPersonality(std::string_view name);
std::vector<std::string> PersonalityNames();

} // namespace kelmio::emulated

#include "modem_emulator/personality.h"

namespace kelmio::emulated {
namespace {

std::vector<Personality> MakeAll() {
  Personality conexant;
  conexant.name = "conexant";
  conexant.identity = {{0, "56000"}, {3, "CX93001-EIS_V0.2002-V92"}};
  conexant.maker = "CONEXANT";
  conexant.model = "CX93001";
  conexant.classes = "0,1,8";
  conexant.codecs = {{1, "UNSIGNED PCM", 8, Coding::Unsigned8},
                     {129, "IMA ADPCM", 4, Coding::Adpcm},
                     {130, "UNSIGNED PCM", 8, Coding::Unsigned8},
                     {140, "2 Bit ADPCM", 2, Coding::Adpcm},
                     {141, "4 Bit ADPCM", 4, Coding::Adpcm}};
  conexant.first_codec = 140;
  conexant.silence_range = "(0,127-129),(0-255)";
  conexant.silence_level_0_only = true;
  conexant.line_sense = true;
  conexant.dial_tone_in_record = false;

  Personality soft = conexant;
  soft.name = "softmodem";
  soft.identity = {{0, "56000"}, {3, "HSF soft modem"}};
  soft.maker = "SOFT";
  soft.model = "HSF 56K";
  soft.codecs = {{1, "UNSIGNED PCM", 8, Coding::Unsigned8},
                 {128, "8-BIT LINEAR", 8, Coding::Unsigned8},
                 {129, "ADPCM", 4, Coding::Adpcm},
                 {130, "UNSIGNED PCM", 8, Coding::Unsigned8},
                 {131, "u-Law", 8, Coding::MuLaw},
                 {132, "A-Law", 8, Coding::ALaw},
                 {133, "16-BIT LINEAR", 16, Coding::Signed16}};
  soft.first_codec = 128;
  soft.rates = {7200, 8000};
  soft.silence_level_0_only = false;
  soft.prefixed = true;

  Personality usr;
  usr.name = "usr";
  usr.identity = {{0, "5601"}, {3, "U.S. Robotics 56K FAX USB V1.2.23"}};
  usr.maker = "U.S. Robotics";
  usr.model = "USR5637";
  usr.classes = "0,1,8";
  usr.codecs = {{128, "8-BIT LINEAR", 8, Coding::Unsigned8}, {129, "16-BIT LINEAR", 16, Coding::Signed16},
                {130, "8-BIT A-LAW", 8, Coding::ALaw},       {131, "8-BIT U-LAW", 8, Coding::MuLaw},
                {132, "IMA ADPCM", 4, Coding::Adpcm},        {133, "G.729", 8, Coding::Adpcm}};
  usr.first_codec = 129;
  usr.rates = {7200, 8000, 11025};
  usr.silence_range = "(0-255),(0-255)";
  usr.silence_level = 128;
  usr.one_silence_code = true;
  usr.ringing_text = true;

  Personality silabs;
  silabs.name = "silabs";
  silabs.identity = {{0, "Si2457"}, {3, "Si2457 Rev D"}};
  silabs.maker = "SILICON LABS";
  silabs.model = "Si2457";
  silabs.classes = "(0,1,256,8)";
  silabs.codecs = {{1, "UNSIGNED PCM", 8, Coding::Unsigned8}, {4, "G.711U", 8, Coding::MuLaw}};
  silabs.first_codec = 4;
  silabs.silence_range = "(0-255),(0-255)";
  silabs.silence_level = 128;
  silabs.caller_id_packets = true;
  silabs.dtmf_end = 0x7F;

  Personality rockwell;
  rockwell.name = "rockwell";
  rockwell.identity = {{0, "33600"}, {3, "V2.210-V34_DS"}};
  rockwell.maker = "ROCKWELL";
  rockwell.model = "AC/V34";
  rockwell.classes = "0,1,2";
  rockwell.set = '#';
  rockwell.codecs = {{2, "ADPCM", 2, Coding::Adpcm},
                     {4, "ADPCM", 4, Coding::Adpcm},
                     {8, "LINEAR", 8, Coding::Unsigned8},
                     {16, "LINEAR", 16, Coding::Signed16}};
  rockwell.first_codec = 4;
  rockwell.rates = {7200};
  rockwell.silence_range = "(0-31),(0-255)";
  rockwell.vcon = true;
  rockwell.plain_dtmf = true;
  rockwell.any_key_stops = true;

  Personality data;
  data.name = "data";
  data.identity = {{0, "56000"}, {3, "V.90 data and fax"}};
  data.maker = "GENERIC";
  data.model = "V90";
  data.classes = "0,1";
  data.set = '\0';
  return {conexant, soft, usr, silabs, rockwell, data};
}

const std::vector<Personality>& All() {
  static const std::vector<Personality> all = MakeAll();
  return all;
}

} // namespace

const Personality* FindPersonality(std::string_view name) {
  for (const Personality& personality : All()) {
    if (personality.name == name) {
      return &personality;
    }
  }
  return nullptr;
}

std::vector<std::string> PersonalityNames() {
  std::vector<std::string> names;
  for (const Personality& personality : All()) {
    names.push_back(personality.name);
  }
  return names;
}

} // namespace kelmio::emulated

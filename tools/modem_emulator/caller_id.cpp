#include "modem_emulator/caller_id.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace kelmio::emulated {
namespace {

struct Form {
  std::string_view name;
  std::string_view lines; // parted by `|`; $d date, $t time, $n number, $a name
};

constexpr std::array<Form, 28> Forms = {{
    {"none", ""},
    {"checksum", ""},
    {"spaced", "DATE = $d|TIME = $t|NMBR = $n|NAME = $a"},
    {"tight", "DATE=$d|TIME=$t|NMBR=$n|NAME=$a"},
    {"ddn", "DATE=$d|TIME=$t|DDN_NMBR=$n|NAME=$a"},
    {"name-first", "DATE=$d|TIME=$t|NAME=$a|NMBR=$n"},
    {"no-name", "DATE=$d|TIME=$t|NMBR=$n"},
    {"number-twice", "DATE = $d|TIME = $t|NMBR = $n|NAME = $a|NMBR = O"},
    {"empty-date", "DATE=|TIME=|NMBR=$n|NAME=$a"},
    {"long-time", "DATE=$d|TIME=20385|NMBR=$n|NAME=$a"},
    {"wrong-time", "DATE=1399|TIME=2799|NMBR=$n|NAME=$a"},
    {"withheld", "DATE=$d|TIME=$t|NMBR=P|NAME=P"},
    {"unavailable", "DATE=$d|TIME=$t|NMBR=O|NAME=O"},
    {"word-restricted", "DATE=$d|TIME=$t|NMBR=Restricted"},
    {"word-unavailable", "DATE=$d|TIME=$t|NMBR=Unavailable|NAME=Unavailable"},
    {"word-withheld", "DATE=$d|TIME=$t|NMBR=WITHHELD"},
    {"latin1", "DATE=$d|TIME=$t|NMBR=$n|NAME=M\xFCLLER"},
    {"name-20", "DATE=$d|TIME=$t|NMBR=$n|NAME=ABCDEFGHIJKLMNOPQRST"},
    {"mesg", "MESG = 110101|DATE = $d|TIME = $t|NMBR = $n|NAME = $a"},
    {"padded", "DATE=$d|TIME=$t|NMBR=     $n     |NAME=$a"},
    {"nbr", "DATE=$d|TIME=$t|NBR=$n"},
    {"caller-number", "CALLER NUMBER: $n"},
    {"fm-to", "FM:$n TO:5551234"},
    {"ring-from", "RING;$n;5551234"},
    {"cut", "DATE=$d|TIME=$t|NMBR=$n"}, // and no more ever comes
    {"eight-bit", "DATE=$d|TIME=$t|NMBR=$n|NAME=\xFF\x80\x9B\xE9"},
    {"name-300", "DATE=$d|TIME=$t|NMBR=$n|NAME=$x"},
    {"hex", "$h"},
}};

std::string Filled(std::string_view lines, const CallerId& caller_id) {
  std::string filled;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i] != '$') {
      filled += lines[i];
      continue;
    }
    switch (lines[++i]) {
    case 'd':
      filled += caller_id.date;
      break;
    case 't':
      filled += caller_id.time;
      break;
    case 'n':
      filled += caller_id.number;
      break;
    case 'a':
      filled += caller_id.name;
      break;
    case 'x':
      filled += std::string(300, 'N');
      break;
    default:
      filled += CallerIdHex(caller_id);
      break;
    }
  }
  return filled;
}

} // namespace

std::vector<std::string> CallerIdForms() {
  std::vector<std::string> names;
  names.reserve(std::size(Forms));
  for (const Form& form : Forms) {
    names.emplace_back(form.name);
  }
  return names;
}

std::vector<std::string> CallerIdLines(const CallerId& caller_id) {
  std::vector<std::string> lines;
  for (const Form& form : Forms) {
    if (form.name == caller_id.form && !form.lines.empty()) {
      lines.emplace_back();
      for (const char character : Filled(form.lines, caller_id)) {
        if (character == '|') {
          lines.emplace_back();
        } else {
          lines.back() += character;
        }
      }
    }
  }
  return lines;
}

std::string CallerIdHex(const CallerId& caller_id) {
  constexpr char Multiple = '\x80'; // message with several parameters
  const auto parameter = [](char type, const std::string& data) {
    return std::string(1, type) + static_cast<char>(data.size()) + data;
  };
  const bool withheld = caller_id.form == "withheld";
  std::string body = parameter('\x01', caller_id.date + caller_id.time);
  body += withheld ? parameter('\x04', "P") : parameter('\x02', caller_id.number);
  if (!withheld && !caller_id.name.empty()) {
    body += parameter('\x07', caller_id.name);
  }
  std::string message = parameter(Multiple, body);
  std::uint8_t sum = 0;
  for (const char character : message) {
    sum = static_cast<std::uint8_t>(sum + static_cast<std::uint8_t>(character));
  }
  message += static_cast<char>(-sum);
  std::string hex;
  for (const char character : message) {
    const auto byte = static_cast<std::uint8_t>(character);
    hex += "0123456789ABCDEF"[byte >> 4];
    hex += "0123456789ABCDEF"[byte & 15];
  }
  return hex;
}

} // namespace kelmio::emulated

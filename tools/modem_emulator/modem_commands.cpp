#include "modem_emulator/modem.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <sstream>

namespace kelmio::emulated {
namespace {

constexpr Time Relay{250'000};
constexpr Time ResetTakes{550'000};
constexpr Time DialToneWait{1'000'000};
constexpr Time PerDigit{100'000};

std::vector<std::string> Split(const std::string& text, const std::string& separators) {
  std::vector<std::string> parts(1);
  for (const char character : text) {
    if (separators.find(character) != std::string::npos) {
      parts.emplace_back();
    } else {
      parts.back() += character;
    }
  }
  return parts;
}

bool IsNumber(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

Time Seconds(double seconds) {
  return Time(static_cast<std::int64_t>(seconds * 1e6));
}

// Commands that a modem may do without, for fault 6.
constexpr std::array<std::string_view, 13> Optional = {"+VIT", "+VSD", "-STE", "+GCI", "+VCID", "+VGT", "+VGR",
                                                       "+VRA", "+VRN", "+IFC", "+VIP", "I3",    "#CID"};

// What `+VLS` knows: the device's number, its name, and the masks of events it can report.
constexpr std::array<std::string_view, 8> Devices = {
    R"(0,"",B0804100,B0804100,B0804100)",  R"(1,"T",0B8433C1,0FE431C1,0B8431C1)",
    R"(2,"L",00840380,0FE40180,00840180)", R"(3,"LT",0B8433C1,0FE431C1,0B8431C1)",
    R"(4,"S",00800000,00800000,00800000)", R"(5,"ST",0B8433C1,0FE431C1,0B8431C1)",
    R"(6,"M",00800000,00800000,00800000)", R"(7,"MST",0B8433C1,0FE431C1,0B8431C1)"};

} // namespace

std::string Modem::Info(const std::string& name, const std::string& text) const {
  return personality_.prefixed ? name + ": " + text : text;
}

void Modem::Reset() {
  if (faults_.Is(7, "deaf")) {
    faults_.Clear(7);
  }
  class_ = device_ = caller_id_ = sense_ = 0;
  words_ = true;
  quiet_ = false;
  codec_ = personality_.first_codec;
  const auto& rates = personality_.rates;
  rate_ = std::find(rates.begin(), rates.end(), LineRate) != rates.end() ? LineRate : rates.front();
  silence_level_ = personality_.silence_level;
  silence_time_ = personality_.silence_time;
  registers_ = {{0, 0}, {7, 60}};
  stored_.clear();
  line_.SetModem(false);
}

void Modem::HangUp(bool to_class_0) {
  line_.SetModem(false);
  device_ = 0;
  beep_.clear();
  if (to_class_0) {
    class_ = 0;
  }
}

Modem::Answer Modem::Execute(const std::string& command) {
  if (faults_.On(6)) {
    const std::string which = faults_.Detail(6);
    const auto begins = [&command](std::string_view with) { return !with.empty() && command.rfind(with, 0) == 0; };
    if (which.empty() ? std::any_of(Optional.begin(), Optional.end(), begins) : begins(which)) {
      return Error();
    }
  }
  const char first = command[0];
  if (first != '+' && first != '#' && first != '-') {
    const bool pair = first == '&' || first == '\\' || first == '%' || first == '*';
    if (command.rfind("&F", 0) == 0) {
      Reset();
      return {"OK", {}, ResetTakes, {}};
    }
    return pair ? Answer{} : Basic(first, command.substr(1));
  }
  const std::size_t end = std::min(command.find_first_of("=?"), command.size());
  const std::string name = command.substr(0, end);
  const std::string argument = command.substr(end);
  if (name == "+FCLASS") {
    return personality_.set == '#' && argument == "=8" ? Error() : SetClass(argument);
  }
  if (name == "+GMI" || name == "+FMI" || name == "#MFR") {
    return Says(personality_.maker);
  }
  if (name == "+GMM" || name == "+FMM" || name == "#MDL" || name == "+GMR" || name == "#REV") {
    return Says(personality_.model);
  }
  if (name == "+IFC" || name == "+GCI") {
    return Stored(name, argument, "(00-FF)");
  }
  if (name == "-STE") {
    if (!personality_.line_sense) {
      return Error();
    }
    if (argument == "?") {
      return Says(std::to_string(sense_));
    }
    sense_ = std::atoi(argument.substr(1).c_str());
    return {};
  }
  if (name == "+VCID" || name == "#CID") { // works in every class
    if (personality_.set == '\0' || name[0] != personality_.set || (argument.size() == 2 && argument[1] > '2')) {
      return Error();
    }
    if (argument[0] == '=' && argument != "=?") {
      caller_id_ = std::atoi(argument.substr(1).c_str());
      return {};
    }
    return Says(Info(name, argument == "?" ? std::to_string(caller_id_) : "(0-2)"));
  }
  if (name == "#CLS" && personality_.set == '#') {
    return SetClass(argument);
  }
  // The voice commands of both sets differ mostly in their first letter.
  if (first != personality_.set || name.rfind('V', 1) != 1 || !Voice()) {
    return Error();
  }
  return VoiceCommand(name.substr(1), argument);
}

Modem::Answer Modem::Basic(char letter, const std::string& argument) {
  const int number = std::atoi(argument.c_str());
  switch (letter) {
  case 'E':
    echo_ = number != 0;
    return {};
  case 'V':
    words_ = number != 0;
    return {};
  case 'Q':
    quiet_ = number != 0;
    return {};
  case 'Z':
    Reset();
    return {"OK", {}, ResetTakes, {}};
  case 'H':
    if (number == 0) {
      HangUp(true);
    } else {
      line_.SetModem(true);
    }
    return {"OK", {}, Relay, {}};
  case 'I': {
    const auto found = personality_.identity.find(number);
    return found == personality_.identity.end() ? Error() : Says(found->second);
  }
  case 'S': {
    const std::size_t sign = argument.find_first_of("=?");
    if (sign == std::string::npos) {
      return Error();
    }
    if (argument[sign] == '=') {
      registers_[number] = std::atoi(argument.substr(sign + 1).c_str());
      return {};
    }
    const std::string value = std::to_string(registers_[number]);
    return Says(std::string(3 - std::min<std::size_t>(3, value.size()), '0') + value);
  }
  case 'D':
    return Dial(argument);
  case 'A':
    return AnswerCall();
  case 'X':
  case 'L':
  case 'M':
  case 'W':
  case 'N':
  case 'P':
  case 'T':
    return {};
  default:
    return Error();
  }
}

Modem::Answer Modem::AnswerCall() {
  line_.SetModem(true);
  abortable_ = true;
  if (Voice()) {
    device_ = 1;
    return {"OK", {}, Relay, {}};
  }
  // As data: the answer tone, then nobody who understands it.
  beep_.clear();
  for (const std::int16_t sample : Tone{{2100}, {}}.First(3)) {
    beep_.push_back(sample);
  }
  return {"", {}, Seconds(20), [this] {
            HangUp(true);
            Finish("NO CARRIER");
          }};
}

Modem::Answer Modem::Dial(const std::string& number) {
  std::string keys;
  for (const char character : number) {
    if (std::string_view("0123456789*#ABCD").find(character) != std::string_view::npos) {
      keys += character;
    }
  }
  dialled_ = keys;
  if (keys.empty() && number.find_first_of("TP") == std::string::npos && !number.empty()) {
    return Error();
  }
  abortable_ = true;
  const std::string fixed = faults_.On(23) ? faults_.Detail(23) : "";
  const bool taken = line_.ExtensionOffHook() || line_.HandsetOffHook();
  line_.SetModem(true);
  device_ = Voice() ? 1 : 0;
  schedule_.In(DialToneWait + static_cast<std::int64_t>(keys.size()) * PerDigit, Group::Dial,
               [this, fixed, taken] { DialOutcome(taken && (sense_ & 1) != 0 ? "LINE-IN-USE" : fixed); });
  return {"", {}, Time(0), {}};
}

void Modem::DialOutcome(const std::string& fixed) {
  const auto give_up = [this](const std::string& why, Time after) {
    schedule_.In(after, Group::Dial, [this, why] {
      HangUp(false);
      Finish(why);
    });
  };
  if (!fixed.empty() && fixed != "late") {
    give_up(fixed, Time(0));
    return;
  }
  using Kind = Callee::Kind;
  const Callee callee = callee_;
  if (callee.kind == Kind::NoDialTone || callee.kind == Kind::LineInUse) {
    give_up(callee.kind == Kind::LineInUse ? "LINE-IN-USE" : "NO DIALTONE", Seconds(1));
    return;
  }
  line_.Dial(callee);
  const auto number = [this](const std::string& name, int otherwise) {
    const auto found = stored_.find(name);
    return found == stored_.end() ? otherwise : std::atoi(found->second.c_str());
  };
  const int gone = number("VRA", 50);  // 0.1 s
  const int never = number("VRN", 10); // 1 s
  const Time late = faults_.Is(23, "late") ? Seconds(5) : Time(0);
  const auto up = [this](Time after) { schedule_.In(after, Group::Dial, [this] { Finish("OK"); }); };
  if (faults_.On(24) && !faults_.Is(24, "ok")) {
    give_up("NO CARRIER", Seconds(1));
  } else if (!Voice()) {
    give_up("NO CARRIER", Seconds(registers_[7]));
  } else if (gone == 0 && never == 0) {
    up(late);
  } else if (callee.kind == Kind::Busy) {
    give_up("BUSY", Seconds(2));
  } else if (callee.kind == Kind::NeverAnswers) {
    give_up("NO ANSWER", Seconds(registers_[7]));
  } else {
    // The modem only knows that ring-back has stopped.
    const double period = 6;
    up(late + (callee.rings == 0 ? Seconds(never) : Seconds(0.1 + (callee.rings - 1) * period + 0.1 * gone)));
  }
}

Modem::Answer Modem::SetClass(const std::string& argument) {
  if (argument == "=?") {
    return Says(Info("+FCLASS", personality_.classes + (personality_.set == '#' && class_ == 8 ? ",8" : "")));
  }
  if (argument == "?") {
    return Says(Info("+FCLASS", std::to_string(class_)));
  }
  const int wanted = std::atoi(argument.substr(1).c_str());
  if (wanted == 8 && (personality_.set == '\0' || faults_.Is(7, "once") || faults_.Is(7, ""))) {
    if (faults_.On(7) && personality_.set != '\0') {
      faults_.Clear(7);
    }
    return Error();
  }
  if (wanted == 8 && faults_.Is(7, "deaf")) {
    return {};
  }
  class_ = wanted;
  if (wanted != 8) {
    HangUp(true);
    class_ = wanted;
  }
  return {"OK", {}, Time(50'000), {}};
}

Modem::Answer Modem::Stored(const std::string& name, const std::string& argument, const std::string& range) {
  if (argument == "=?") {
    return Says(Info(name, range));
  }
  const std::string key = name.substr(1);
  if (argument == "?") {
    return Says(Info(name, stored_.count(key) != 0 ? stored_[key] : "0"));
  }
  stored_[key] = argument.substr(std::min<std::size_t>(1, argument.size()));
  return {};
}

Modem::Answer Modem::VoiceCommand(const std::string& name, const std::string& argument) {
  if (name == "VSM" || name == "VBS") {
    return Compression(argument);
  }
  if (name == "VSR") {
    rate_ = std::atoi(argument.substr(1).c_str());
    const auto& rates = personality_.rates;
    return std::find(rates.begin(), rates.end(), rate_) == rates.end() ? Error() : Answer{};
  }
  if (name == "VLS") {
    return Device(argument);
  }
  if (name == "VSD") {
    return Silence(argument);
  }
  if (name == "VSP" && argument != "?" && argument != "=?") {
    silence_time_ = std::atoi(argument.substr(1).c_str());
    return {};
  }
  if (name == "VTS") {
    return BeepOf(argument);
  }
  if (name == "VTX") {
    return StartStream(Stream::Play);
  }
  if (name == "VRX") {
    return StartStream(Stream::Record);
  }
  if (name == "VTR") {
    return StartStream(Stream::Duplex);
  }
  if (name == "VBQ") {
    return Says(std::to_string(settings_.play_buffer));
  }
  if (name == "VIP") {
    const int keep = class_;
    const bool off_hook = line_.ModemOffHook();
    Reset();
    class_ = keep;
    line_.SetModem(off_hook);
    return {};
  }
  for (const std::string_view known :
       {"VIT", "VGT", "VGR", "VRA", "VRN", "VNH", "VTD", "VDR", "VRID", "VEM", "VPR", "VSS", "VSK", "VDID"}) {
    if (name == known) {
      return Stored(personality_.set + name, argument, "(0-255)");
    }
  }
  return Error();
}

Modem::Answer Modem::Compression(const std::string& argument) {
  std::string rates;
  for (const int rate : personality_.rates) {
    rates += (rates.empty() ? "" : ",") + std::to_string(rate);
  }
  if (argument == "=?") {
    Answer answer;
    if (personality_.set == '#') {
      return Says("2,4,8,16");
    }
    for (const Codec& codec : personality_.codecs) {
      const std::string many = personality_.rates.size() > 1 ? "(" + rates + ")" : rates;
      answer.lines.push_back(Info("+VSM", std::to_string(codec.id) + ",\"" + codec.name + "\"," +
                                              std::to_string(codec.bits) + ",0," + many + ",0,0"));
    }
    return answer;
  }
  if (argument == "?") {
    return Says(Info("+VSM", std::to_string(codec_) + "," + std::to_string(rate_) + ",0,0"));
  }
  const std::vector<std::string> parts = Split(argument.substr(1), ",");
  const auto& known = personality_.rates;
  const int rate = parts.size() > 1 ? std::atoi(parts[1].c_str()) : rate_;
  const int id = std::atoi(parts[0].c_str());
  const bool codec_known = std::any_of(personality_.codecs.begin(), personality_.codecs.end(),
                                       [id](const Codec& codec) { return codec.id == id; });
  if (!IsNumber(parts[0]) || !codec_known || std::find(known.begin(), known.end(), rate) == known.end()) {
    return Error();
  }
  codec_ = id;
  rate_ = rate;
  return {};
}

Modem::Answer Modem::Device(const std::string& argument) {
  if (argument == "=?") {
    Answer answer;
    for (const std::string_view device : Devices) {
      answer.lines.push_back(Info("+VLS", std::string(device)));
    }
    return answer;
  }
  if (argument == "?") {
    return Says(Info("+VLS", std::to_string(device_)));
  }
  const std::string value = argument.substr(std::min<std::size_t>(1, argument.size()));
  int device = IsNumber(value) ? std::atoi(value.c_str()) : -1;
  if (personality_.set == '#' && device == 8) {
    device = 3; // line and local telephone
  }
  if (device < 0 || device >= static_cast<int>(Devices.size())) {
    return Error();
  }
  device_ = device;
  line_.SetModem(device == 1 || device == 3 || device == 5 || device == 7);
  if (device == 0) {
    beep_.clear();
  }
  return {"OK", {}, Relay, {}};
}

Modem::Answer Modem::Silence(const std::string& argument) {
  if (argument == "=?") {
    return Says(Info("+VSD", personality_.silence_range));
  }
  if (argument == "?") {
    return Says(Info("+VSD", std::to_string(silence_level_) + "," + std::to_string(silence_time_)));
  }
  const std::vector<std::string> parts = Split(argument.substr(1), ",");
  if (parts.size() != 2 || !IsNumber(parts[0]) || !IsNumber(parts[1])) {
    return Error();
  }
  silence_level_ = std::atoi(parts[0].c_str());
  silence_time_ = silence_level_ != 0 && personality_.silence_level_0_only ? 0 : std::atoi(parts[1].c_str());
  return {};
}

// Tones as [f,f,t], digits as they are or {d,t}; t in 10 ms.
Modem::Answer Modem::BeepOf(const std::string& argument) {
  if (argument.size() < 2 || argument[0] != '=' || device_ == 0) {
    return Error();
  }
  std::stringstream items(argument.substr(1));
  double length = 0;
  const auto add = [this, &length](const Tone& tone, double seconds) {
    const Samples samples = tone.First(seconds);
    beep_.insert(beep_.end(), samples.begin(), samples.end());
    length += seconds;
  };
  for (char character = 0; items.get(character);) {
    std::string inner;
    if (character == '[' || character == '{') {
      std::getline(items, inner, character == '[' ? ']' : '}');
      const std::vector<std::string> parts = Split(inner, ",");
      if (parts.size() < 2) {
        return Error();
      }
      const double seconds = std::atof(parts.back().c_str()) / 100;
      if (character == '{') {
        add(Dtmf(parts[0][0]), seconds);
      } else {
        Tone tone;
        for (std::size_t i = 0; i < 2 && parts.size() == 3; ++i) {
          if (std::atof(parts[i].c_str()) > 0) {
            tone.frequencies.push_back(std::atof(parts[i].c_str()));
          }
        }
        add(tone, seconds);
      }
    } else if (character != ',') {
      add(Dtmf(character), 0.1);
    }
  }
  return {"OK", {}, Seconds(length), {}};
}

Modem::Answer Modem::StartStream(Stream stream) {
  const bool device_ready = device_ != 0 && (line_.ModemOffHook() || device_ == 2 || device_ == 4 || device_ == 6);
  if (!device_ready) {
    return Error();
  }
  return {"CONNECT", {}, Time(60'000), [this, stream] {
            stream_ = stream;
            BeginStream();
          }};
}

} // namespace kelmio::emulated

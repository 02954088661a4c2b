// A voice modem on a pseudo terminal, to run a whole program against. Commands come line by line on the standard
// input; `help` names them. Every answer is a line, so that a script can wait for it.

#include "modem_emulator/modem_emulator.h"

#include <cstdlib>
#include <iostream>
#include <map>
#include <sstream>

namespace {

using namespace kelmio::emulated;

constexpr const char* Help = R"(ring [number [name [form]]]   the line rings; form as `forms` names them
answer-dial RINGS | busy | never | no-dialtone | in-use   what comes of the next numbers
say FILE.wav | tone HZ SECONDS | keys 12#   the far end: 8000 Hz 16 bit mono, a tone, DTMF
hangup [loop|busy|busy-tone|dial|dial-tone|silence]
handset on|off    extension on|off    handset-say FILE.wav
unplug    replug [no-rights|busy]
fault N [detail]    clear N
heard FILE.wav    transcript    complaints    state    forms    personalities    wait SECONDS    quit
)";

const std::map<std::string, HangUpSign> Signs = {
    {"", HangUpSign::LoopBreak},         {"loop", HangUpSign::LoopBreak},    {"busy", HangUpSign::BusyCode},
    {"busy-tone", HangUpSign::BusyTone}, {"dial", HangUpSign::DialToneCode}, {"dial-tone", HangUpSign::DialTone},
    {"silence", HangUpSign::Silence}};

Callee CalleeOf(const std::string& word) {
  using Kind = Callee::Kind;
  const std::map<std::string, Kind> kinds = {{"busy", Kind::Busy},
                                             {"never", Kind::NeverAnswers},
                                             {"no-dialtone", Kind::NoDialTone},
                                             {"in-use", Kind::LineInUse}};
  const auto found = kinds.find(word);
  return found != kinds.end() ? Callee{found->second, 0} : Callee{Kind::Answers, std::atoi(word.c_str())};
}

void PrintAll(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    std::cout << "  " << line << '\n';
  }
}

// False for a command that isn't known.
bool Run(ModemEmulator& modem, const std::string& command, std::istringstream& words) {
  std::string first;
  std::string second;
  std::string third;
  if (command == "fault") {
    words >> first;
    std::getline(words >> std::ws, second);
    modem.SetFault(std::atoi(first.c_str()), second);
    return true;
  }
  words >> first >> second >> third;
  if (command == "ring") {
    CallerId caller_id;
    caller_id.number = first.empty() ? caller_id.number : first;
    caller_id.name = second.empty() ? caller_id.name : second;
    caller_id.form = third.empty() ? caller_id.form : third;
    modem.Ring(caller_id);
  } else if (command == "answer-dial") {
    modem.WhenDialled(CalleeOf(first));
  } else if (command == "say") {
    modem.CallerSays(ReadWave(first));
  } else if (command == "tone") {
    modem.CallerSays(Tone{{std::atof(first.c_str())}, {}}.First(std::atof(second.c_str())));
  } else if (command == "keys") {
    modem.CallerPresses(first);
  } else if (command == "hangup" && Signs.count(first) != 0) {
    modem.HangUp(Signs.at(first));
  } else if (command == "handset") {
    modem.Handset(first == "on");
  } else if (command == "handset-say") {
    modem.HandsetSays(ReadWave(first));
  } else if (command == "extension") {
    modem.Extension(first == "on");
  } else if (command == "unplug") {
    modem.Unplug();
  } else if (command == "replug") {
    using Node = ModemEmulator::Node;
    modem.Replug(first == "no-rights" ? Node::NoRights : first == "busy" ? Node::Busy : Node::Usable);
  } else if (command == "clear") {
    modem.ClearFault(std::atoi(first.c_str()));
  } else if (command == "heard") {
    return WriteWave(first, modem.Heard());
  } else if (command == "transcript") {
    std::cout << modem.Transcript();
  } else if (command == "complaints") {
    PrintAll(modem.ComplaintsAtEnd());
  } else if (command == "state") {
    std::cout << "off-hook " << modem.OffHook() << " class " << modem.Class() << " stream "
              << static_cast<int>(modem.Streaming()) << " heard " << modem.Heard().size() << " recorded "
              << modem.Recorded().size() << " dialled " << modem.Dialled() << '\n';
  } else if (command == "forms") {
    PrintAll(CallerIdForms());
  } else if (command == "personalities") {
    PrintAll(PersonalityNames());
  } else if (command == "wait") {
    modem.WaitFor([] { return false; }, std::atof(first.c_str()));
  } else if (command == "help") {
    std::cout << Help;
  } else {
    return false;
  }
  return true;
}

} // namespace

int main(int count, char** arguments) {
  ModemEmulator::Options options;
  std::vector<std::pair<int, std::string>> faults;
  for (int i = 1; i + 1 < count; i += 2) {
    const std::string name = arguments[i];
    const std::string value = arguments[i + 1];
    if (name == "--link") {
      options.link = value;
    } else if (name == "--personality" && FindPersonality(value) != nullptr) {
      options.personality = value;
    } else if (name == "--speed" && std::atof(value.c_str()) > 0) {
      options.speed = std::atof(value.c_str());
    } else if (name == "--fault") { // N or N:detail
      const std::size_t colon = value.find(':');
      faults.emplace_back(std::atoi(value.c_str()), colon == std::string::npos ? "" : value.substr(colon + 1));
    } else {
      count = 0;
    }
  }
  if (count % 2 == 0) {
    std::cerr << "modem_emulator --link PATH [--personality NAME] [--speed FACTOR] [--fault N[:DETAIL]]...\n" << Help;
    return 2;
  }
  try {
    ModemEmulator modem(options);
    for (const auto& [number, detail] : faults) {
      modem.SetFault(number, detail);
    }
    std::cout << "ready " << modem.Port().string() << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
      std::istringstream words(line);
      std::string command;
      words >> command;
      if (command == "quit") {
        break;
      }
      std::cout << (command.empty() || Run(modem, command, words) ? "ok" : "error") << std::endl;
    }
    const std::vector<std::string> complaints = modem.ComplaintsAtEnd();
    PrintAll(complaints);
    return complaints.empty() ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "modem_emulator: " << error.what() << '\n';
    return 2;
  }
}

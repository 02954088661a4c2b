#include "modem_emulator/modem.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace kelmio::emulated {
namespace {

constexpr int LowestSpeed = 115200; // 8000 bytes a second with start and stop bits need 80000 bits
constexpr std::size_t LongestLine = 400;
constexpr Time TickTime{10'000};

const std::map<std::string, std::string> Numbers = {{"OK", "0"},           {"CONNECT", "1"}, {"RING", "2"},
                                                    {"NO CARRIER", "3"},   {"ERROR", "4"},   {"NO DIALTONE", "6"},
                                                    {"NO DIAL TONE", "6"}, {"BUSY", "7"},    {"NO ANSWER", "8"}};

std::string Visible(std::string_view bytes) {
  std::string visible;
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    char text[8] = {character, 0};
    if (byte == '\r') {
      std::snprintf(text, sizeof text, "<CR>");
    } else if (byte == '\n') {
      std::snprintf(text, sizeof text, "<LF>");
    } else if (byte == Dle) {
      std::snprintf(text, sizeof text, "<DLE>");
    } else if (byte < 0x20 || byte > 0x7E) {
      std::snprintf(text, sizeof text, "<%02X>", byte);
    }
    visible += text;
  }
  return visible;
}

} // namespace

Modem::Modem(const Personality& personality, Settings settings, Schedule& schedule, VirtualLine& line, Faults& faults)
    : personality_(personality), settings_(settings), schedule_(schedule), line_(line), faults_(faults) {
  line_.events.ring_burst = [this] { Ring(); };
  line_.events.caller_id = [this](const CallerId& caller_id) { Report(caller_id); };
  line_.events.ring_back = [this] {
    if (pending_ && personality_.ringing_text) {
      Text("RINGING");
    } else {
      Code('r');
    }
  };
  line_.events.answered = [] {};
  line_.events.code = [this](char code) {
    if (code != 'd' || personality_.dial_tone_in_record || !Recording()) {
      Code(code);
    }
  };
  line_.events.key = [this](char key) { Key(key); };
  PowerUp();
}

void Modem::PowerUp() {
  for (const Group group : {Group::Clock, Group::Reply, Group::Dial, Group::Stream, Group::Fault}) {
    schedule_.Cancel(group);
  }
  out_.clear();
  input_.clear();
  in_command_ = pending_ = abortable_ = stuck_ = false;
  stream_ = Stream::None;
  Reset();
  echo_ = true;
  schedule_.In(TickTime, Group::Clock, [this] { Tick(); });
}

void Modem::Opened() {
  Log('*', "opened");
  told_speed_ = false;
  if (faults_.Is(30, "reopen") || faults_.Is(30, "")) {
    stuck_ = false;
  }
}

void Modem::Closed() {
  Log('*', "closed");
  EndStray();
  out_.clear();
  in_command_ = false;
  schedule_.Cancel(Group::Reply);
  schedule_.Cancel(Group::Dial);
  pending_ = abortable_ = false;
  stream_ = Stream::None;
  HangUp(true);
}

bool Modem::Take(unsigned char byte) {
  if (faults_.On(1) || stuck_) {
    return true;
  }
  if (stream_ != Stream::None) {
    if (Playing() && play_.size() + 2 > settings_.play_buffer) {
      return false;
    }
    TakePlayed(byte);
    return true;
  }
  return TakeCommandByte(byte);
}

bool Modem::TakeCommandByte(unsigned char byte) {
  if (pending_) {
    if (!abortable_) {
      if (byte != '\r' && byte != '\n') {
        const std::string what = "a byte came before the last command was answered";
        if (complaints_.empty() || complaints_.back() != what) {
          Complain(what);
        }
      }
      return true; // the byte is lost
    }
    Log('>', std::string(1, static_cast<char>(byte)));
    schedule_.Cancel(Group::Dial);
    schedule_.Cancel(Group::Reply);
    HangUp(false);
    Finish(faults_.Is(24, "ok") ? "OK" : "NO CARRIER");
    return true;
  }
  if (echo_ || faults_.On(2)) {
    out_.push_back({schedule_.Now(), false, std::string(1, static_cast<char>(byte))});
  }
  const char upper = static_cast<char>(std::toupper(byte));
  if (in_command_) {
    Log('>', std::string(1, static_cast<char>(byte)));
    if (byte == '\b' && !input_.empty()) {
      input_.pop_back();
    } else if (byte == '\r') {
      in_command_ = false;
      last_line_ = input_;
      RunLine(last_line_);
    } else if (byte >= 0x20 && input_.size() < LongestLine) {
      input_ += static_cast<char>(byte);
    }
    return true;
  }
  if (upper == 'T' && !stray_.empty() && (stray_.back() == 'A' || stray_.back() == 'a')) {
    stray_.pop_back();
    EndStray();
    Log('>', "AT");
    in_command_ = true;
    input_.clear();
    if (speed_ < LowestSpeed && !told_speed_) {
      Complain("speed " + std::to_string(speed_) + " is too low for voice");
      told_speed_ = true;
    }
  } else if (byte == '/' && !stray_.empty() && (stray_.back() == 'A' || stray_.back() == 'a')) {
    stray_.pop_back();
    EndStray();
    Log('>', "A/");
    RunLine(last_line_);
  } else {
    Stray(byte);
  }
  return true;
}

// Bytes in command state that are no command. Codes are harmless, and so is a single sample ahead of them, as they
// stand in what stops a playback.
void Modem::Stray(unsigned char byte) {
  const DleReader::Item item = reader_.Take(byte);
  if (item.is_code || item.samples.empty()) {
    return;
  }
  if (byte == '\r') {
    EndStray();
  } else if (byte != '\n' && byte != 0) {
    stray_ += item.samples;
  }
}

void Modem::EndStray() {
  if (stray_.size() > 1) {
    Log('>', stray_);
    const bool echoed =
        stray_.find("RING") != std::string::npos || stray_.find("NMBR") != std::string::npos || stray_ == "OK";
    if (echoed) {
      Complain("the modem's own words came back: the terminal is not raw");
    } else if (was_playing_) {
      Complain("data after the end of playback: " + std::to_string(stray_.size()) + " bytes");
    } else {
      Complain("bytes that are no command: " + Visible(std::string_view(stray_).substr(0, 40)));
    }
  }
  stray_.clear();
  was_playing_ = false;
}

void Modem::RunLine(const std::string& body) {
  std::vector<std::string> commands;
  std::string rest;
  for (const char character : body) {
    if (character != ' ') {
      rest += static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    }
  }
  while (!rest.empty()) {
    std::size_t end = 1;
    if (rest[0] == '+' || rest[0] == '#' || rest[0] == '-' || rest[0] == '*') {
      end = std::min(rest.find(';'), rest.size());
    } else if (rest[0] == 'D') {
      end = rest.size();
    } else if (rest[0] != ';') {
      end = rest[0] == '&' || rest[0] == '\\' || rest[0] == '%' ? 2 : 1;
      while (end < rest.size() &&
             (std::isdigit(static_cast<unsigned char>(rest[end])) != 0 || rest[end] == '=' || rest[end] == '?')) {
        ++end;
      }
    }
    if (rest[0] != ';') {
      commands.push_back(rest.substr(0, end));
    }
    rest.erase(0, end);
  }
  Answer whole;
  whole.latency = Time(10'000);
  for (const std::string& command : commands) {
    Answer answer = Execute(command);
    whole.latency += answer.latency;
    whole.lines.insert(whole.lines.end(), answer.lines.begin(), answer.lines.end());
    whole.final = answer.final;
    whole.then = answer.then;
    if (answer.final != "OK") {
      break;
    }
  }
  pending_ = true;
  schedule_.In(whole.latency, Group::Reply, [this, whole] {
    for (const std::string& line : whole.lines) {
      Text(line);
    }
    if (!whole.final.empty()) {
      Finish(whole.final);
    }
    if (whole.then) {
      whole.then();
    }
  });
}

std::string Modem::Ok() const {
  return (personality_.vcon || faults_.On(8)) && Voice() && line_.ModemOffHook() ? "VCON" : "OK";
}

void Modem::Finish(const std::string& final) {
  pending_ = abortable_ = false;
  if (faults_.On(5)) {
    const std::string kind = faults_.Detail(5);
    if (Voice() && (kind.empty() || kind == "dle")) {
      Put(std::string("\r\n") + final.substr(0, 1) + static_cast<char>(Dle) + 'R' + final.substr(1) + "\r\n");
      return;
    }
    if (kind == "cid") {
      for (const std::string& line : CallerIdLines({})) {
        Text(line);
      }
    } else {
      Text("RING");
    }
  }
  Text(final == "OK" ? Ok() : final);
  if (faults_.On(25) && Voice()) {
    const bool other = faults_.Is(25, "P");
    Code(other ? 'P' : 'H');
    schedule_.In(Time(200'000), Group::Fault, [this, other] { Code(other ? 'p' : 'h'); });
  }
  if (faults_.On(30) && (faults_.Is(30, "replug") || faults_.Is(30, "reopen") || faults_.Is(30, "")) && Voice()) {
    stuck_ = line_.ModemOffHook();
  }
}

void Modem::Text(const std::string& text) {
  if (quiet_) {
    return;
  }
  const auto number = Numbers.find(text);
  if (!words_) {
    Put(number == Numbers.end() ? text + "\r\n" : number->second + "\r");
    return;
  }
  const std::string end = faults_.On(3) ? "\r\n\r\n" : "\r\n";
  Put(end + text + end);
}

void Modem::Put(const std::string& bytes) {
  if (bytes.empty() || faults_.On(1)) {
    return;
  }
  Time due = schedule_.Now();
  if (stream_ == Stream::None && faults_.Is(4, "merged")) {
    due += Time(80'000);
  }
  if (!out_.empty()) {
    due = std::max(due, out_.back().due);
  }
  // In a stream all but a code of two bytes is sound.
  const bool sound = stream_ != Stream::None && bytes.size() > 2;
  Log('<', sound ? "" : bytes, sound ? bytes.size() : 0);
  if (stream_ == Stream::None && faults_.On(4) && !faults_.Is(4, "merged")) {
    for (const char character : bytes) {
      due += Time(1'000);
      out_.push_back({due, true, std::string(1, character)});
    }
    return;
  }
  const std::size_t dle = bytes.find(static_cast<char>(Dle));
  if (stream_ != Stream::None && faults_.On(13) && dle + 1 < bytes.size()) {
    out_.push_back({due, true, bytes.substr(0, dle + 1)});
    out_.push_back({due + Time(5'000), true, bytes.substr(dle + 1)});
    return;
  }
  out_.push_back({due, false, bytes});
}

void Modem::Code(char code) {
  if (Voice()) {
    Put(std::string{static_cast<char>(Dle), code});
  }
}

void Modem::Complain(const std::string& what) {
  Log('*', "COMPLAINT: " + what);
  complaints_.push_back(what);
}

// Sample bytes are only counted, so that what was said stays readable.
void Modem::Log(char direction, std::string_view bytes, std::size_t samples) {
  constexpr Time OneSaying{50'000};
  const Time now = schedule_.Now();
  const bool line_over = direction == '>' && !log_.empty() && log_.back() == '\r';
  const bool later = samples == 0 && now - log_last_ > OneSaying;
  if (direction != log_direction_ || direction == '*' || (samples > 0) != (log_samples_ > 0) || line_over || later) {
    FlushLog();
    log_began_ = now;
  }
  log_direction_ = direction;
  log_ += bytes;
  log_samples_ += samples;
  log_last_ = now;
}

void Modem::FlushLog() {
  if (!log_.empty() || log_samples_ > 0) {
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, "%9.3f %c ", static_cast<double>(log_began_.count()) / 1e6, log_direction_);
    transcript_ += stamp;
    transcript_ += log_samples_ > 0 ? "[" + std::to_string(log_samples_) + " samples]" : Visible(log_);
    transcript_ += '\n';
  }
  log_.clear();
  log_samples_ = 0;
  log_direction_ = 0;
}

const std::string& Modem::Transcript() {
  FlushLog();
  return transcript_;
}

} // namespace kelmio::emulated

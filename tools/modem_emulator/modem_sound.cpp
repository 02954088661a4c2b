#include "modem_emulator/modem.h"

#include <algorithm>
#include <cstdlib>

namespace kelmio::emulated {
namespace {

constexpr Time TickTime{10'000};
constexpr int TickSamples = LineRate / 100;
constexpr Time FinalCode{60'000};       // between the end of a stream and its final code
constexpr Time KeyRepeat{70'000};       // a held key is told again so often
constexpr std::size_t MostChunks = 400; // more than this unread is an overrun
constexpr int VoiceLevel = 300;         // mean of the magnitude

} // namespace

const Codec& Modem::Chosen() const {
  const auto& codecs = personality_.codecs;
  const auto found =
      std::find_if(codecs.begin(), codecs.end(), [this](const Codec& codec) { return codec.id == codec_; });
  return found == codecs.end() ? codecs.front() : *found;
}

void Modem::BeginStream() {
  EndStray();
  reader_.Reset();
  play_.clear();
  packet_.clear();
  started_ = dry_ = paused_ = draining_ = dropped_ = false;
  strays_ = 0;
  heard_voice_ = told_silence_ = false;
  quiet_ticks_ = 0;
  line_samples_ = rate_samples_ = 0;
  tenths_ = 0;
  if (faults_.On(12) && Recording() && !out_.empty()) {
    out_.back().due += settings_.packet + TickTime * 2;
  }
}

void Modem::Tick() {
  const int percent = faults_.Is(21, "fast") ? 101 : faults_.Is(21, "slow") ? 99 : 100;
  schedule_.In(TickTime * 100 / percent, Group::Clock, [this] { Tick(); });
  int level = 0;
  const bool still = stream_ == Stream::None && beep_.empty() && line_.Unheard();
  for (int i = 0; i < TickSamples && !still; ++i) {
    std::int16_t out = 0;
    if (!beep_.empty()) {
      out = beep_.front();
      beep_.pop_front();
    }
    if (stream_ != Stream::None) {
      ++line_samples_;
    }
    const std::int64_t due = line_samples_ * rate_ / LineRate;
    const std::int64_t count = stream_ == Stream::None ? 0 : due - rate_samples_;
    rate_samples_ += count;
    if (Playing()) {
      for (std::int64_t n = 0; n < count; ++n) {
        last_played_ = NextPlayed();
      }
      out = last_played_;
    }
    const VirtualLine::Moment moment = line_.Step(out);
    const int far = device_ == 2 ? 0 : moment.line;
    const int near = device_ == 2 || device_ == 3 ? moment.handset : 0;
    const int heard = std::clamp(far + near, -32768, 32767);
    level += std::abs(heard);
    const bool stalled = faults_.Is(21, "stall") && tenths_ >= 10 && tenths_ < 40;
    if (Recording() && !stalled) {
      packet_.insert(packet_.end(), static_cast<std::size_t>(count), static_cast<std::int16_t>(heard));
    }
  }
  if (Recording()) {
    WatchSilence(level / TickSamples);
    if (static_cast<std::int64_t>(packet_.size()) * 1'000'000 >= settings_.packet.count() * rate_) {
      SendPacket();
    }
  }
  if (stream_ == Stream::Play && draining_ && play_.size() < BytesPerSample(Chosen().coding)) {
    EndStream(true);
  }
  if (++ticks_ % 10 == 0) {
    ++tenths_;
    EveryTenth();
  }
}

std::int16_t Modem::NextPlayed() {
  const std::size_t size = BytesPerSample(Chosen().coding);
  if (!started_ || paused_) {
    return 0;
  }
  if (play_.size() < size) {
    if (!dry_ && !draining_) {
      Code('u');
    }
    dry_ = true;
    return 0;
  }
  dry_ = false;
  const Samples sample = Decode(Chosen().coding, std::string_view(play_).substr(0, size));
  played_.append(play_, 0, size);
  play_.erase(0, size);
  return sample.front();
}

void Modem::TakePlayed(unsigned char byte) {
  const DleReader::Item item = reader_.Take(byte);
  if (item.is_code) {
    Log('>', std::string{static_cast<char>(Dle), static_cast<char>(item.code)});
    HostCode(item.code);
    return;
  }
  if (!Playing() || dropped_ || draining_) {
    strays_ += static_cast<std::int64_t>(item.samples.size());
    return;
  }
  if (!item.samples.empty()) {
    Log('>', "", item.samples.size());
  }
  play_ += item.samples;
  started_ = started_ || !play_.empty();
}

void Modem::HostCode(unsigned char code) {
  const bool stops_record = stream_ == Stream::Record && (code == '!' || code == Esc || personality_.any_key_stops);
  const bool stops_duplex = stream_ == Stream::Duplex && (code == '^' || code == '!');
  if (faults_.On(18) && Recording()) {
    const std::string only = faults_.Detail(18);
    if (only == "mute" && (stops_record || stops_duplex)) {
      stream_ = Stream::None;
      return;
    }
    if (!(only == "esc" && code == Esc) && !(only == "caret" && code == '^')) {
      return;
    }
    EndStream(true);
    return;
  }
  if (stops_record || stops_duplex) {
    if (code == '!') {
      packet_.clear();
    }
    EndStream(true);
    return;
  }
  switch (code) {
  case Etx:
    draining_ = true;
    break;
  case Can:
    play_.clear();
    dropped_ = true;
    break;
  case 'p':
    paused_ = true;
    break;
  case 'r':
    paused_ = false;
    break;
  case 0:
  case 'u':
  case 'd':
  case '!':
  case '^':
  case Esc:
    break;
  default:
    Complain("a DLE that was not doubled, before byte " + std::to_string(code));
    break;
  }
}

void Modem::SendPacket() {
  if (packet_.empty()) {
    return;
  }
  std::string bytes = Encode(Chosen().coding, packet_);
  packet_.clear();
  if (faults_.On(14)) {
    constexpr unsigned char Nasty[] = {Dle, Etx, 0x11, 0x13, Sub, Can, Dle, Dle, '\r', '\n', 'O', 'K'};
    for (char& byte : bytes) {
      byte = static_cast<char>(Nasty[nasty_++ % std::size(Nasty)]);
    }
  }
  if (out_.size() > MostChunks) {
    Code('o');
    return;
  }
  recorded_ += bytes;
  Put(Shield(bytes));
}

void Modem::WatchSilence(int level) {
  if (level > VoiceLevel) {
    heard_voice_ = true;
    told_silence_ = false;
    quiet_ticks_ = 0;
    return;
  }
  constexpr int TicksPerTenth = 10;
  if (++quiet_ticks_ >= silence_time_ * TicksPerTenth && silence_time_ > 0 && !told_silence_) {
    told_silence_ = true;
    Code(heard_voice_ && !personality_.one_silence_code ? 'q' : 's');
  }
}

void Modem::EndStream(bool says_ok) {
  if (strays_ > 0) {
    Complain(std::to_string(strays_) + (stream_ == Stream::Record ? " bytes of sound while recording"
                                                                  : " bytes of sound after playback was stopped"));
  }
  if (Recording()) {
    SendPacket();
    Put(std::string{static_cast<char>(Dle), static_cast<char>(Etx)});
  }
  was_playing_ = Playing();
  stream_ = Stream::None;
  reader_.Reset();
  if (says_ok && !faults_.On(19)) {
    pending_ = true;
    schedule_.In(FinalCode, Group::Reply, [this] { Finish("OK"); });
  }
}

// What goes wrong by itself.
void Modem::EveryTenth() {
  constexpr int Second = 10;
  const bool streaming = stream_ != Stream::None;
  if (faults_.On(29) && !streaming && !pending_ && !in_command_ && ticks_ % 70 == 0) {
    for (const char character : std::string_view("AT+GMI\r")) {
      TakeCommandByte(static_cast<unsigned char>(character));
    }
  }
  if (!streaming) {
    return;
  }
  if (faults_.On(15) && tenths_ % 5 == 0) {
    constexpr char Unknown[] = {'Z', '%', '\x81', 'M', '\x7B'};
    Code(Unknown[static_cast<std::size_t>(tenths_ / 5) % std::size(Unknown)]);
  }
  if (faults_.On(16) && tenths_ % Second == 0) {
    const std::string codes = faults_.Detail(16).empty() ? "bdsq" : faults_.Detail(16);
    Code(codes[static_cast<std::size_t>(tenths_ / Second) % codes.size()]);
  }
  if (faults_.Is(21, "underrun") && Playing()) {
    Code('u');
  }
  if (tenths_ != Second) {
    return;
  }
  if (faults_.On(26)) {
    Code('w');
  }
  if (faults_.On(20)) {
    Put(std::string{static_cast<char>(Dle), static_cast<char>(Etx)});
    packet_.clear();
    stream_ = Stream::None;
    Text("OK");
  }
  if (faults_.On(27)) {
    stream_ = Stream::None;
    HangUp(true);
    Text("OK");
  }
}

void Modem::Ring() {
  if (!Voice()) {
    Text("RING");
    return;
  }
  if (!faults_.Is(9, "text")) {
    Code('R');
  }
  if (faults_.On(9)) {
    Text("RING");
  }
}

void Modem::Report(const CallerId& caller_id) {
  if (caller_id_ == 0) {
    return;
  }
  std::vector<std::string> lines = CallerIdLines(caller_id);
  if (lines.empty()) {
    return;
  }
  if (caller_id_ == 2) {
    lines = {CallerIdHex(caller_id)};
  }
  if (!Voice() || !personality_.caller_id_packets) {
    for (const std::string& line : lines) {
      Text(line);
    }
    return;
  }
  std::string packet = {static_cast<char>(Dle), 'X'};
  packet += "\r\nCIDM\r\n";
  for (const std::string& line : lines) {
    packet += line + "\r\n";
  }
  packet += static_cast<char>(Dle);
  Put(packet + '.');
}

void Modem::Key(char key) {
  const std::string way = faults_.On(22) ? faults_.Detail(22) : "";
  if (way == "sound" || device_ == 0) {
    return;
  }
  if (way == "plain" || (way.empty() && personality_.plain_dtmf)) {
    Code(key);
    return;
  }
  const char end = way == "7f" ? '\x7F' : way == "v253" ? '~' : personality_.dtmf_end;
  Code('/');
  Code(key);
  schedule_.In(KeyRepeat, Group::Stream, [this, key] { Code(key); });
  schedule_.In(KeyRepeat + TickTime, Group::Stream, [this, end] { Code(end); });
}

void Modem::HandsetMoved(bool off_hook) {
  line_.SetHandset(off_hook);
  Code(off_hook ? (personality_.set == '#' ? 't' : 'H') : 'h');
}

void Modem::ExtensionMoved(bool off_hook) {
  constexpr int SensesExtension = 2; // a bit of `-STE`
  line_.SetExtension(off_hook);
  if ((sense_ & SensesExtension) != 0) {
    Code(off_hook ? 'P' : 'p');
  }
}

} // namespace kelmio::emulated

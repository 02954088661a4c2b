#pragma once

#include "modem_emulator/dle.h"
#include "modem_emulator/faults.h"
#include "modem_emulator/personality.h"
#include "modem_emulator/schedule.h"
#include "modem_emulator/virtual_line.h"

#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kelmio::emulated {

// The modem itself: bytes of the host in, bytes for the host out, and the line. It has a clock but no thread and no
// file, and isn't thread-safe.
class Modem {
public:
  struct Settings {
    std::size_t play_buffer = 2048; // bytes
    Time packet{20'000};            // how much of a recording goes out at a time
  };

  // Something to be written to the host, not before its time.
  struct Chunk {
    Time due;
    bool apart; // to be read alone
    std::string bytes;
  };

  Modem(const Personality& personality, Settings settings, Schedule& schedule, VirtualLine& line, Faults& faults);

  // One byte of the host. False when the modem can't take it now; it is to be offered again later.
  bool Take(unsigned char byte);
  std::deque<Chunk>& Out() { return out_; }

  void PowerUp();
  // Somebody opened the port, or the last one closed it and so dropped DTR.
  void Opened();
  void Closed();
  // What the host has set, before a byte of it.
  void HostSpeed(int speed) { speed_ = speed; }
  void HandsetMoved(bool off_hook);
  void ExtensionMoved(bool off_hook);
  void WhenDialled(const Callee& callee) { callee_ = callee; }
  void Complain(const std::string& what);

  enum class Stream { None, Play, Record, Duplex };
  Stream Streaming() const { return stream_; }
  int Class() const { return class_; }
  const std::string& Transcript();
  const std::string& Dialled() const { return dialled_; }
  const std::string& Played() const { return played_; }
  const std::string& Recorded() const { return recorded_; }
  const std::vector<std::string>& Complaints() const { return complaints_; }

private:
  // What one command gives: lines of information, then a final code.
  struct Answer {
    std::string final = "OK"; // empty when `then` sees to it
    std::vector<std::string> lines;
    Time latency{20'000};
    std::function<void()> then;
  };
  static Answer Error() { return {"ERROR", {}, Time(20'000), {}}; }
  static Answer Says(std::string line) { return {"OK", {std::move(line)}, Time(20'000), {}}; }

  // modem.cpp: lines, results, the host's codes
  bool TakeCommandByte(unsigned char byte);
  void Stray(unsigned char byte);
  void EndStray();
  void RunLine(const std::string& body);
  void Finish(const std::string& final);
  void Text(const std::string& text);
  void Put(const std::string& bytes);
  void Code(char code);
  void Log(char direction, std::string_view bytes, std::size_t samples = 0);
  void FlushLog();
  std::string Ok() const;
  bool Voice() const { return class_ == 8; }

  // modem_commands.cpp: what each command does
  Answer Execute(const std::string& command);
  Answer Basic(char letter, const std::string& argument);
  Answer Dial(const std::string& number);
  Answer AnswerCall();
  Answer SetClass(const std::string& argument);
  Answer VoiceCommand(const std::string& name, const std::string& argument);
  Answer Compression(const std::string& argument);
  Answer Device(const std::string& argument);
  Answer Silence(const std::string& argument);
  Answer BeepOf(const std::string& argument);
  Answer StartStream(Stream stream);
  Answer Stored(const std::string& name, const std::string& argument, const std::string& range);
  std::string Info(const std::string& name, const std::string& text) const;
  void DialOutcome(const std::string& fixed);
  void HangUp(bool to_class_0);
  void Reset();

  // modem_sound.cpp: streams and what is heard on the line
  void BeginStream();
  void Tick();
  void TakePlayed(unsigned char byte);
  void HostCode(unsigned char code);
  std::int16_t NextPlayed();
  void SendPacket();
  void WatchSilence(int level);
  void EndStream(bool says_ok);
  void EveryTenth();
  bool Recording() const { return stream_ == Stream::Record || stream_ == Stream::Duplex; }
  bool Playing() const { return stream_ == Stream::Play || stream_ == Stream::Duplex; }
  const Codec& Chosen() const;
  void Ring();
  void Report(const CallerId& caller_id);
  void Key(char key);

  const Personality& personality_;
  Settings settings_;
  Schedule& schedule_;
  VirtualLine& line_;
  Faults& faults_;

  // The port and what came through it.
  std::deque<Chunk> out_;
  std::string input_; // of the line under way
  std::string last_line_;
  std::string stray_;
  bool in_command_ = false; // between AT and its CR
  bool pending_ = false;    // a command runs
  bool abortable_ = false;  // and any byte stops it
  bool was_playing_ = false;
  int speed_ = 0;
  bool told_speed_ = false;
  bool stuck_ = false;

  // What commands set.
  bool echo_ = true;
  bool words_ = true;
  bool quiet_ = false;
  int class_ = 0;
  int device_ = 0; // of `+VLS`
  int codec_ = 0;
  int rate_ = 8000;
  int silence_level_ = 0;
  int silence_time_ = 0;
  int caller_id_ = 0;
  int sense_ = 0;
  std::map<int, int> registers_;
  std::map<std::string, std::string> stored_;

  // The stream.
  Stream stream_ = Stream::None;
  DleReader reader_;
  std::string play_;
  bool started_ = false; // the first sample of a playback came
  bool dry_ = false;
  bool paused_ = false;
  bool draining_ = false;
  bool dropped_ = false;    // by CAN
  std::int64_t strays_ = 0; // host bytes that are no part of the stream
  Samples packet_;
  std::deque<std::int16_t> beep_;
  std::int64_t line_samples_ = 0; // since the stream began
  std::int64_t rate_samples_ = 0;
  std::int64_t ticks_ = 0;
  int tenths_ = 0; // since the stream began
  int quiet_ticks_ = 0;
  std::int16_t last_played_ = 0;
  bool heard_voice_ = false;
  bool told_silence_ = false;
  std::size_t nasty_ = 0;

  Callee callee_;
  std::string dialled_;
  std::string played_;
  std::string recorded_;
  std::string transcript_;
  std::string log_;
  char log_direction_ = 0;
  std::size_t log_samples_ = 0;
  Time log_began_{0};
  Time log_last_{0};
  std::vector<std::string> complaints_;
};

} // namespace kelmio::emulated

#pragma once

// A voice modem with a telephone line, for tests of whoever talks to one. It stands behind a pseudo terminal:
//
//   ModemEmulator modem({.personality = "usr", .link = folder / "ttyModem", .speed = 20});
//   // ... the driver opens modem.Port() and arms it ...
//   modem.Ring({.number = "5551234"});
//   modem.WaitFor([&] { return modem.OffHook(); });
//   modem.CallerSays(Tone{{440}, {}}.First(2));
//   modem.HangUp(HangUpSign::LoopBreak);
//   modem.WaitFor([&] { return !modem.OffHook(); });
//   EXPECT_THAT(modem.Complaints(), IsEmpty());
//
// It takes and gives sound at 8000 samples a second of its own clock and has a play buffer of 2 KiB, so a driver that
// plays must write at that speed and finds its writes held up when it's ahead. `speed` makes the clock run faster than
// the real one; the driver's clock has to be as fast, or be the one of the samples.
//
// The emulator has a thread of its own. Every function may be called from any thread and returns at once; only the
// destructor, Unplug, Replug and WaitFor wait.

#include "modem_emulator/caller_id.h"
#include "modem_emulator/modem.h"
#include "modem_emulator/pseudo_terminal.h"
#include "modem_emulator/virtual_line.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kelmio::emulated {

class ModemEmulator {
public:
  struct Options {
    std::string personality = "conexant"; // see FindPersonality; an unknown name is taken as conexant
    std::filesystem::path link = {};      // made, and swapped by rename; empty: use the device's own name
    double speed = 1;                     // seconds of the modem per real second
    Modem::Settings settings = {};
  };

  // Plugged in and powered when it returns. Throws std::system_error when there's no pseudo terminal to be had.
  explicit ModemEmulator(Options options);
  ~ModemEmulator();
  ModemEmulator(const ModemEmulator&) = delete;
  ModemEmulator& operator=(const ModemEmulator&) = delete;

  // What the driver opens.
  std::filesystem::path Port() const;

  // ---- The far end and the exchange ----
  // Rings when the line is free, until answered, HangUp, or the style's number of bursts.
  void Ring(const CallerId& caller_id = {}, const RingStyle& style = {});
  // The far end speaks, after what it is still saying; sample by sample once a call is up.
  void CallerSays(const Samples& samples);
  // Keys 0-9 * # A-D, as sound of 0.1 s and as the codes of this modem.
  void CallerPresses(const std::string& keys);
  void HangUp(HangUpSign sign = HangUpSign::LoopBreak);
  // What comes of every later dialling.
  void WhenDialled(const Callee& callee);

  // ---- Telephones beside the modem ----
  void Handset(bool off_hook); // on the modem's own jack: <DLE>H and h
  void HandsetSays(const Samples& samples);
  void Extension(bool off_hook); // on another jack: <DLE>P and p with `-STE`

  // ---- The cable ----
  enum class Node { Usable, NoRights, Busy };
  // The host sees a hang-up, and the link goes away.
  void Unplug();
  // A new device with new power under the old link. NoRights and Busy don't stop root.
  void Replug(Node node = Node::Usable);

  // ---- What goes wrong ----
  // A fault stays until cleared. `detail` picks the kind where there are several; the first named is the usual one.
  //  1 no answer to anything              2 echo can't be turned off
  //  3 doubled line ends                  4 "bytes" one by one, "merged" replies in one read
  //  5 within replies: "dle" (voice class; else a RING), "ring", "cid"
  //  6 ERROR to the command that begins with `detail`; without, to all that a modem may lack
  //  7 class 8: "once" ERROR, "deaf" OK but stays in class 0 until reset     8 VCON for OK in a call
  //  9 in class 8 RING as "both" code and text, "text" alone    10 rings "fast" 0.6 s apart, "one" only
  // 11 caller id: any form of CallerIdForms(), "before" ring 1, "after-3"
  // 12 CONNECT and samples in one read   13 reads that end on a DLE
  // 14 recordings full of control bytes  15 unknown codes     16 false codes: "bdsq" or those of `detail`
  // 17 HangUp is always "loop", "busy", "busy-tone", "dial", "dial-tone", "silence"
  // 18 recording isn't stopped: never, but by "esc", "caret"; "mute" stops without a word
  // 19 no OK at the end of a stream      20 a stream ends by itself after 1 s
  // 21 "underrun" codes all the time, "stall" of 3 s after 1 s of recording, clock 1 % "fast" or "slow"
  // 22 keys as "plain" code, "v253", "7f", "sound" only
  // 23 dialling ends with the text of `detail`, or "late" by 5 s
  // 24 dialling is broken off after 1 s; with "ok" only the host's abort is answered by OK
  // 25 after each reply in class 8 the handset ("H") or extension ("P") is lifted and put back
  // 26 call waiting 1 s into a stream    27 falls to class 0 then
  // 28 unplugged on reaching "idle" "ring" "call" "play" "record" "dial"; then cleared; Replug is the test's
  // 29 another program types commands    30 stuck once in a call until "reopen", "replug"
  void SetFault(int number, const std::string& detail = "");
  void ClearFault(int number);

  // ---- What happened ----
  bool OffHook() const;
  int Class() const; // of +FCLASS
  Modem::Stream Streaming() const;
  // What the far end of the last call heard, from the answer on, with the silence in between.
  Samples Heard() const;
  // Sample bytes that were played and recorded since the beginning, without shielding.
  std::string Played() const;
  std::string Recorded() const;
  std::string Dialled() const; // keys of the last number
  // All that passed, with time and direction; samples only as their number.
  std::string Transcript() const;
  // What a driver must not do: words of the modem sent back by a cooked terminal, data after an abort, bytes that are
  // no command, a command before the last one was answered, a DLE not doubled, less than 115200 bit/s.
  std::vector<std::string> Complaints() const;
  // The same, and whether the modem was left off hook.
  std::vector<std::string> ComplaintsAtEnd() const;

  // Waits until `holds`, which may call anything here. False after `real_seconds`.
  bool WaitFor(const std::function<bool()>& holds, double real_seconds = 10) const;
  // The clock of the modem in seconds.
  double Now() const;

private:
  void Run();
  // Brings the modem to the present: clock, what the host wrote, what it is to read.
  void Serve();
  void ReadHost();
  void WriteHost();
  void UnplugOnFault();
  void Nudge() const;

  Options options_;
  mutable std::mutex mutex_;
  Faults faults_;
  Schedule schedule_;
  VirtualLine line_;
  mutable Modem modem_;
  PseudoTerminal terminal_;
  std::chrono::steady_clock::time_point began_;
  std::string waiting_; // read, but not yet taken by the modem
  bool open_ = false;
  bool over_ = false;
  bool unplug_ = false; // asked for, not yet done
  std::condition_variable unplugged_;
  int wake_[2] = {-1, -1};
  std::thread thread_;
};

} // namespace kelmio::emulated

// Messages as callers leave them, made by arithmetic and by a speech synthesizer: what is said, what the line does to
// it, and how the caller's hanging up sounds. The same number is the same message on every run.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "media/signals.h"

namespace kelmio::bench {

using test::Samples;

/// What tells the groups apart whose figures are wanted.
enum class Content : std::uint8_t { Speech, SoftSpeech, SpeechInNoise, SpeechOverHum, Music, Count };
enum class Ending : std::uint8_t { Busy, Congestion, DialTone, Silence, Howler, Count };
enum class Coding : std::uint8_t { Linear16, MuLaw, ALaw, Adpcm, Linear8, Count };
const char* NameOf(Content content);
const char* NameOf(Ending ending);
const char* NameOf(Coding coding);

struct Message {
  Content content = Content::Speech;
  Ending ending = Ending::Silence;
  Coding coding = Coding::Linear16;
  bool lossy = false;  // 1 to 3 packets of 100 are lost
  std::string details; // levels, tone and line, in words
  Samples before;      // heard while the greeting plays: its echo
  Samples sound;       // what is recorded, at 8000 samples a second, until long after the hang-up
  double hang_up = 0;  // seconds into `sound`
};

/// The speech synthesizer `espeak-ng` is missing or fails. There is no corpus without speech.
struct NoSpeech : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Any `number`. Contents, endings and codings take turns, so that few messages have some of each.
Message MakeMessage(unsigned number);

} // namespace kelmio::bench

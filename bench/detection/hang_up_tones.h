// What exchanges send once the caller has hung up, by country.
#pragma once

#include <vector>

namespace kelmio::bench {

/// Seconds; a tone of 0 seconds never ends. `gain` in decibels, for tones of several levels.
struct Turn {
  double on, off;
  double gain = 0;
};

struct HangUpTone {
  const char* country;
  std::vector<double> hertz;
  std::vector<Turn> turns; // in turn, again and again
};

/// Frequencies and cadences as the tone tables of open telephone exchanges have them (ITU-T E.180, supplement 2).
inline const std::vector<HangUpTone>& BusyTones() {
  static const std::vector<HangUpTone> tones{{"US CA", {480, 620}, {{.5, .5}}},
                                             {"UK", {400}, {{.375, .375}}},
                                             {"DE", {425}, {{.48, .48}}},
                                             {"FR", {440}, {{.5, .5}}},
                                             {"IT NL CH BE PT PL BG", {425}, {{.5, .5}}},
                                             {"IT ES", {425}, {{.2, .2}}},
                                             {"AT", {420}, {{.4, .4}}},
                                             {"SE BR", {425}, {{.25, .25}}},
                                             {"CZ", {425}, {{.33, .33}}},
                                             {"FI EE", {425}, {{.3, .3}}},
                                             {"RU", {425}, {{.35, .35}}},
                                             {"RU", {425}, {{.4, .4}}},
                                             {"AU", {425}, {{.375, .375}}},
                                             {"AU", {400}, {{.375, .375}}},
                                             {"JP", {400}, {{.5, .5}}},
                                             {"CN", {450}, {{.35, .35}}}};
  return tones;
}

inline const std::vector<HangUpTone>& CongestionTones() {
  static const std::vector<HangUpTone> tones{{"US CA", {480, 620}, {{.25, .25}}},
                                             {"UK", {400}, {{.4, .35}, {.225, .525}}},
                                             {"DE", {425}, {{.24, .24}}},
                                             {"FR", {440}, {{.25, .25}}},
                                             {"IT CH PT FI EE", {425}, {{.2, .2}}},
                                             {"ES", {425}, {{.2, .2}, {.2, .2}, {.2, .6}}},
                                             {"NL BG", {425}, {{.25, .25}}},
                                             {"BE", {425}, {{.167, .167}}},
                                             {"AT", {420}, {{.2, .2}}},
                                             {"SE", {425}, {{.25, .75}}},
                                             {"PL", {425}, {{.5, .5}}},
                                             {"CZ", {425}, {{.165, .165}}},
                                             {"RU", {425}, {{.175, .175}}},
                                             {"AU", {425}, {{.375, .375, 0}, {.375, .375, -10}}},
                                             {"JP", {400}, {{.5, .5}}},
                                             {"CN", {450}, {{.7, .7}}},
                                             {"BR", {425}, {{.25, .25}, {.75, .25}}}};
  return tones;
}

inline const std::vector<HangUpTone>& DialTones() {
  static const std::vector<HangUpTone> tones{{"US CA UK", {350, 440}, {{0, 0}}},
                                             {"most of Europe, BR", {425}, {{0, 0}}},
                                             {"FR", {440}, {{0, 0}}},
                                             {"FR", {330, 440}, {{0, 0}}},
                                             {"IT", {425}, {{.2, .2}, {.6, 1}}},
                                             {"AT", {420}, {{0, 0}}},
                                             {"CZ", {425}, {{.33, .33}, {.66, .66}}},
                                             {"AU", {413, 438}, {{0, 0}}},
                                             {"JP", {400}, {{0, 0}}},
                                             {"CN", {450}, {{0, 0}}}};
  return tones;
}

/// Told to whoever left the handset off: North America sends four frequencies, 100 ms in turn with 100 ms of pause.
inline const std::vector<HangUpTone>& HowlerTones() {
  static const std::vector<HangUpTone> tones{{"US CA", {1400, 2060, 2450, 2600}, {{.1, .1}}}};
  return tones;
}

} // namespace kelmio::bench

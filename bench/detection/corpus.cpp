#include "detection/corpus.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

#include "detection/hang_up_tones.h"
#include "media/resampler.h"
#include "media/spandsp.h"

namespace kelmio::bench {
namespace {

using test::Mix;
using test::Noise;
using test::Quiet;
using test::Sines;
using test::operator+;

constexpr int kRate = 8000;
constexpr double kAfterHangUp = 20; // seconds

// Levels here are in decibels against a full-scale square wave; dBm0 of G.711 reads 6.2 higher.
constexpr double kDbm0 = -6.2;

class Dice {
public:
  explicit Dice(unsigned seed) : random_(seed * 2654435761U + 17) {}
  double Between(double low, double high) {
    return low + (high - low) * (static_cast<double>(random_()) / 4294967296.0);
  }
  bool Chance(double share) { return Between(0, 1) < share; }
  std::size_t Below(std::size_t count) { return random_() % count; }
  template <typename List> const auto& Of(const List& list) { return list[Below(std::size(list))]; }

private:
  std::mt19937 random_;
};

std::int16_t Clip(double value) {
  return static_cast<std::int16_t>(std::lround(std::clamp(value, -32768.0, 32767.0)));
}

std::size_t Count(double seconds) {
  return static_cast<std::size_t>(std::lround(seconds * kRate));
}

double Amplitude(double level) {
  return 32768.0 * std::pow(10.0, level / 20);
}

// ---- speech

struct Speaker {
  const char* voice;
  const char* words;
};
constexpr std::array kSpeakers{
    Speaker{"en-us", "Hello, this is Peter calling about the car. Please call me back when you can."},
    Speaker{"en-gb", "Good afternoon. The parcel did not arrive, so I would like to know where it is."},
    Speaker{"de", "Guten Tag, hier spricht Frau Sommer. Bitte rufen Sie mich morgen zurück."},
    Speaker{"fr-fr", "Bonjour, je voudrais prendre rendez-vous pour jeudi. Merci de me rappeler."},
    Speaker{"es", "Buenos días, llamo por el piso. Llámeme esta tarde, por favor."},
    Speaker{"it", "Buongiorno, ho trovato le sue chiavi. Mi richiami quando vuole."},
    Speaker{"pl", "Dzień dobry, dzwonię w sprawie naprawy. Proszę o telefon."},
    Speaker{"ru", "Добрый день, это Ольга. Перезвоните мне, пожалуйста, вечером."},
    Speaker{"sv", "Hej, det är Anna. Ring mig gärna när du har tid."},
    Speaker{"nl", "Goedemiddag, ik bel over de afspraak van maandag."},
    Speaker{"pt", "Bom dia, queria saber se a loja está aberta no sábado."},
    Speaker{"fi", "Hyvää päivää, soitan uudestaan huomenna."},
};
constexpr std::array kVariants{"", "+m3", "+f2", "+f4"};
constexpr std::array kSpeeds{120, 160, 210}; // words a minute

Samples Synthesize(const Speaker& speaker, const char* variant, int speed) {
  const std::string command = std::string("espeak-ng --stdout -v ") + speaker.voice + variant + " -s " +
                              std::to_string(speed) + " \"" + speaker.words + "\" 2>/dev/null";
  constexpr std::size_t kHeader = 44;
  constexpr int kEspeakRate = 22050;
  std::string bytes;
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::array<char, 65536> chunk{};
  while (const std::size_t count = pipe ? std::fread(chunk.data(), 1, chunk.size(), pipe.get()) : 0)
    bytes.append(chunk.data(), count);
  if (bytes.size() < kHeader + kEspeakRate)
    throw NoSpeech("espeak-ng makes no speech: " + command);
  Samples wide;
  for (std::size_t at = kHeader; at + 1 < bytes.size(); at += 2)
    wide.push_back(static_cast<std::int16_t>(static_cast<unsigned char>(bytes[at]) | (bytes[at + 1] << 8)));
  Samples narrow;
  const auto keep = [&narrow](std::span<const std::int16_t> part) {
    narrow.insert(narrow.end(), part.begin(), part.end());
  };
  FixedRate to_line(kRate);
  to_line.Put(wide, kEspeakRate, keep);
  to_line.End(keep);
  const auto loud = [](std::int16_t sample) { return std::abs(sample) > 200; };
  const auto begin = std::find_if(narrow.begin(), narrow.end(), loud);
  const auto end = std::find_if(narrow.rbegin(), narrow.rend(), loud).base();
  return begin < end ? Samples(begin, end) : narrow;
}

/// One sentence or two, without silence at its ends, as loud as the synthesizer makes it.
const Samples& Utterance(std::size_t speaker, std::size_t variant, std::size_t speed) {
  static std::map<std::array<std::size_t, 3>, Samples> made;
  Samples& sound = made[{speaker, variant, speed}];
  if (sound.empty())
    sound = Synthesize(kSpeakers[speaker], kVariants[variant], kSpeeds[speed]);
  return sound;
}

void SetLevel(Samples& samples, double level) {
  const double gain = std::pow(10.0, (level - test::LevelOf(samples)) / 20);
  for (auto& sample : samples)
    sample = Clip(sample * gain);
}

/// One speaker with pauses. A quarter of them is cut off at the start, as by a line that opens late.
Samples Speech(Dice& dice, double seconds, double level, double longest_pause) {
  const std::size_t speaker = dice.Below(kSpeakers.size());
  const std::size_t variant = dice.Below(kVariants.size());
  Samples said;
  bool first = true;
  while (said.size() < Count(seconds)) {
    Samples sound = Utterance(speaker, variant, dice.Below(kSpeeds.size()));
    SetLevel(sound, level);
    if (first && dice.Chance(0.25))
      sound.erase(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(Count(dice.Between(0.05, 0.6))));
    first = false;
    const double pause = dice.Chance(0.2) ? dice.Between(1, longest_pause) : dice.Between(0.2, 1.2);
    said = std::move(said) + sound + Quiet(pause);
  }
  return said;
}

// ---- what else is heard

Samples Pink(Dice& dice, double level, double seconds) {
  // White noise through poles of a slope of 3 dB an octave (Kellet's economical filter).
  double b0 = 0;
  double b1 = 0;
  double b2 = 0;
  Samples noise(Count(seconds));
  for (auto& sample : noise) {
    const double white = dice.Between(-1, 1);
    b0 = 0.99765 * b0 + white * 0.0990460;
    b1 = 0.96300 * b1 + white * 0.2965164;
    b2 = 0.57000 * b2 + white * 1.0526913;
    sample = Clip(2000 * (b0 + b1 + b2 + white * 0.1848));
  }
  SetLevel(noise, level);
  return noise;
}

Samples Babble(Dice& dice, double level, double seconds) {
  Samples babble = Quiet(seconds);
  for (int talker = 0; talker < 6; ++talker)
    babble = Mix(std::move(babble), Speech(dice, seconds, -30, 1.5));
  SetLevel(babble, level);
  return babble;
}

Samples Hum(Dice& dice, double level, double seconds) {
  const double mains = dice.Chance(0.5) ? 50 : 60;
  Samples hum = Quiet(seconds);
  for (int harmonic = 1; harmonic <= 9; harmonic += 2)
    hum =
        Mix(std::move(hum), Sines({mains * harmonic}, level - 20 * std::log10(harmonic) * dice.Between(1, 2), seconds));
  SetLevel(hum, level);
  return hum;
}

/// Chords and a melody over them, plucked or held as on an organ.
Samples Music(Dice& dice, double level, double seconds) {
  constexpr std::array kChords{0, 5, 7, 9, 2, 4};
  constexpr std::array kScale{0, 2, 4, 5, 7, 9, 11, 12};
  const double tonic = dice.Between(110, 220);
  const double beat = dice.Between(0.3, 0.9);
  const bool plucked = dice.Chance(0.5);
  const double brightness = dice.Between(0.3, 0.8); // each overtone against the one below
  std::vector<double> wave(Count(seconds));
  const auto play = [&](double begin, double length, double semitone, double size) {
    const double hertz = tonic * std::pow(2.0, semitone / 12);
    const std::size_t first = Count(begin);
    const std::size_t count = std::min(Count(length), wave.size() - std::min(first, wave.size()));
    for (std::size_t i = 0; i < count; ++i) {
      const double time = static_cast<double>(i) / kRate;
      const double edge = std::min({1.0, time / 0.01, (length - time) / 0.02});
      double sum = 0;
      double overtone = size * edge * (plucked ? std::exp(-3 * time / length) : 1.0);
      for (int k = 1; k <= 5 && hertz * k < 3400; ++k, overtone *= brightness)
        sum += overtone * std::sin(2 * std::numbers::pi * hertz * k * time);
      wave[first + i] += sum;
    }
  };
  for (double at = 0; at < seconds; at += 4 * beat) {
    const int root = dice.Of(kChords);
    for (const int third : {0, 4, 7})
      play(at, 4 * beat, root + third, 0.5);
    double note = at;
    while (note < at + 4 * beat) {
      const double length = beat * (dice.Chance(0.3) ? 2 : dice.Chance(0.4) ? 0.5 : 1);
      play(note, length, 12 + dice.Of(kScale), 1);
      note += length;
    }
  }
  Samples music(wave.size());
  std::transform(wave.begin(), wave.end(), music.begin(), [](double sample) { return Clip(4000 * sample); });
  SetLevel(music, level);
  return music;
}

// ---- how a call ends

Samples Cadence(const HangUpTone& tone, double level, double frequency_error, double cadence_error, double seconds) {
  Samples sound;
  std::size_t step = 0;
  double phase = 0; // of time, so that each turn begins where an oscillator stands that never stops
  while (sound.size() < Count(seconds)) {
    const Turn& turn = tone.turns[step++ % tone.turns.size()];
    const double on = turn.on == 0 ? seconds : turn.on * (1 + cadence_error);
    const double amplitude = Amplitude(level + turn.gain) * std::sqrt(2.0 / static_cast<double>(tone.hertz.size()));
    for (std::size_t i = 0; i < Count(on); ++i, phase += 1.0 / kRate) {
      double sum = 0;
      for (const double hertz : tone.hertz)
        sum += std::sin(2 * std::numbers::pi * hertz * (1 + frequency_error) * phase);
      sound.push_back(Clip(amplitude * sum));
    }
    sound.resize(sound.size() + Count(turn.off * (1 + cadence_error)));
  }
  sound.resize(Count(seconds));
  return sound;
}

/// What the line sounds like from the moment of the hang-up on, without its noise.
Samples EndOf(Dice& dice, Ending ending, std::string& details) {
  Samples end;
  if (dice.Chance(0.5)) // the click of a handset that is put down
    end = Noise(-20, dice.Between(0.005, 0.025));
  if (ending == Ending::Silence)
    return end + Quiet(kAfterHangUp);
  // An exchange takes its time to give a tone.
  const double wait = dice.Chance(0.5) ? dice.Between(0, 0.5) : dice.Between(0.5, 4);
  const auto& tones = ending == Ending::Busy         ? BusyTones()
                      : ending == Ending::Congestion ? CongestionTones()
                      : ending == Ending::DialTone   ? DialTones()
                                                     : HowlerTones();
  const HangUpTone& tone = dice.Of(tones);
  const double level = dice.Between(-25, -6) + kDbm0;
  const double frequency_error = dice.Between(-0.02, 0.02);
  const double cadence_error = dice.Between(-0.1, 0.1);
  details += std::string(" ") + tone.country + " at " + std::to_string(static_cast<int>(level)) + " f" +
             std::to_string(static_cast<int>(1000 * frequency_error)) + " c" +
             std::to_string(static_cast<int>(100 * cadence_error)) + " after " + std::to_string(wait);
  return end + Quiet(wait) + Cadence(tone, level, frequency_error, cadence_error, kAfterHangUp);
}

// ---- what the line does

Samples Coded(Samples samples, Coding coding) {
  if (coding == Coding::Adpcm) {
    const std::unique_ptr<ima_adpcm_state_t, int (*)(ima_adpcm_state_t*)> encoder(
        ima_adpcm_init(nullptr, IMA_ADPCM_IMA4, 0), ima_adpcm_free);
    const std::unique_ptr<ima_adpcm_state_t, int (*)(ima_adpcm_state_t*)> decoder(
        ima_adpcm_init(nullptr, IMA_ADPCM_IMA4, 0), ima_adpcm_free);
    std::vector<std::uint8_t> bytes(samples.size());
    const int length = ima_adpcm_encode(encoder.get(), bytes.data(), samples.data(), static_cast<int>(samples.size()));
    Samples decoded(samples.size() + 16);
    const int count = ima_adpcm_decode(decoder.get(), decoded.data(), bytes.data(), length);
    if (count + 1 < static_cast<int>(samples.size()))
      throw std::logic_error("ADPCM lost sound");
    decoded.resize(samples.size());
    return decoded;
  }
  for (auto& sample : samples) {
    if (coding == Coding::MuLaw)
      sample = ulaw_to_linear(linear_to_ulaw(sample));
    else if (coding == Coding::ALaw)
      sample = alaw_to_linear(linear_to_alaw(sample));
    else if (coding == Coding::Linear8)
      sample = static_cast<std::int16_t>(std::clamp((sample + 128) >> 8, -128, 127) * 256);
  }
  return samples;
}

/// Lost packets of 20 ms are silent, or the one before again.
void Lose(Dice& dice, Samples& samples) {
  constexpr std::size_t kPacket = 160;
  const double share = dice.Between(0.01, 0.03);
  const bool repeats = dice.Chance(0.5);
  for (std::size_t at = kPacket; at + kPacket <= samples.size(); at += kPacket) {
    if (!dice.Chance(share))
      continue;
    const auto packet = samples.begin() + static_cast<std::ptrdiff_t>(at);
    if (repeats)
      std::copy_n(packet - kPacket, kPacket, packet);
    else
      std::fill_n(packet, kPacket, std::int16_t{0});
  }
}

/// Noise of the line itself, which goes on after the hang-up.
Samples LineNoise(Dice& dice, Content content, double level, double seconds) {
  Samples noise =
      level > -90 ? (dice.Chance(0.7) ? Noise(level, seconds) : Pink(dice, level, seconds)) : Quiet(seconds);
  if (content == Content::SpeechOverHum)
    noise = Mix(std::move(noise), Hum(dice, dice.Between(-50, -28), seconds));
  return noise;
}

void ChangeLevel(Samples& samples, double from, double decibels) {
  const double gain = std::pow(10.0, decibels / 20);
  for (std::size_t i = Count(from); i < samples.size(); ++i)
    samples[i] = Clip(samples[i] * gain);
}

Samples ContentOf(Dice& dice, Content content, double noise_level, std::string& details) {
  const double seconds = dice.Chance(0.05) ? 0 : dice.Between(8, 40); // some hang up at once
  // A speaker whom one can follow is so far over the noise.
  constexpr double kOverNoise = 9;
  const bool soft = content == Content::SoftSpeech;
  const double wanted = soft ? dice.Between(-35, -28) : dice.Between(-28, -6);
  const double level = std::max(wanted + kDbm0, noise_level + kOverNoise);
  constexpr double kLongestPause = 6;
  details +=
      " level " + std::to_string(static_cast<int>(level)) + " noise " + std::to_string(static_cast<int>(noise_level));
  if (content == Content::Music)
    return Speech(dice, 3, level, 2) + Music(dice, level, seconds + 15);
  Samples said = Speech(dice, seconds, level, kLongestPause);
  if (content != Content::SpeechInNoise)
    return said;
  const double length = static_cast<double>(said.size()) / kRate;
  constexpr std::array kRatios{20.0, 15.0, 10.0, 6.0};
  const double around = level - dice.Of(kRatios);
  const std::size_t kind = dice.Below(3);
  details += kind == 0 ? " white " : kind == 1 ? " pink " : " babble ";
  details += std::to_string(static_cast<int>(around));
  return Mix(std::move(said), kind == 0   ? Noise(around, length)
                              : kind == 1 ? Pink(dice, around, length)
                                          : Babble(dice, around, length));
}

} // namespace

const char* NameOf(Content content) {
  constexpr std::array kNames{"speech", "soft speech", "speech in noise", "speech over hum", "music on hold"};
  return kNames[static_cast<std::size_t>(content)];
}

const char* NameOf(Ending ending) {
  constexpr std::array kNames{"busy tone", "congestion tone", "dial tone", "silence", "howler"};
  return kNames[static_cast<std::size_t>(ending)];
}

const char* NameOf(Coding coding) {
  constexpr std::array kNames{"16-bit linear", "u-law", "A-law", "IMA ADPCM", "8-bit linear"};
  return kNames[static_cast<std::size_t>(coding)];
}

Message MakeMessage(unsigned number) {
  Dice dice(number);
  Message message;
  constexpr auto kContents = static_cast<unsigned>(Content::Count);
  constexpr auto kEndings = static_cast<unsigned>(Ending::Count);
  constexpr auto kCodings = static_cast<unsigned>(Coding::Count);
  message.content = static_cast<Content>(number % kContents);
  message.ending = static_cast<Ending>((number / kContents) % kEndings);
  message.coding = static_cast<Coding>(dice.Below(kCodings));
  message.lossy = dice.Chance(0.4);
  const double noise_level = dice.Chance(0.15) ? -100 : dice.Between(-80, -35) + kDbm0;

  Samples said = ContentOf(dice, message.content, noise_level, message.details);
  message.hang_up = static_cast<double>(said.size()) / kRate;
  said = std::move(said) + EndOf(dice, message.ending, message.details);
  Samples greeting_echo = Speech(dice, 3, dice.Between(-55, -35), 1);
  greeting_echo.resize(Count(3.0)); // cut in a word, whose echo ends in the message
  message.before = std::move(greeting_echo);
  const double whole = static_cast<double>(message.before.size() + said.size()) / kRate;
  Samples noise = LineNoise(dice, message.content, noise_level, whole);
  if (message.ending == Ending::Silence && dice.Chance(0.5)) // the exchange's noise stands in for the caller's line
    ChangeLevel(noise, 3 + message.hang_up, dice.Between(-10, 10));
  Samples line = Mix(message.before + said, noise);
  line = Coded(std::move(line), message.coding);
  if (message.lossy)
    Lose(dice, line);
  const auto begin = line.begin() + static_cast<std::ptrdiff_t>(std::min(message.before.size(), line.size()));
  message.before.assign(line.begin(), begin);
  message.sound.assign(begin, line.end());
  return message;
}

} // namespace kelmio::bench

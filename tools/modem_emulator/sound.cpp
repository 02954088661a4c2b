#include "modem_emulator/sound.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <numbers>
#include <numeric>

namespace kelmio::emulated {
namespace {

constexpr std::size_t WaveHeader = 44;

// The eight segments of G.711 share one search: the bit length of the magnitude.
std::uint8_t MuLawByte(std::int16_t sample) {
  constexpr int Bias = 0x84;
  const int magnitude = std::min(std::abs(static_cast<int>(sample)), 32635) + Bias;
  int segment = 7;
  while (segment > 0 && (magnitude & (0x80 << segment)) == 0) {
    --segment;
  }
  const int bits = (sample < 0 ? 0x80 : 0) | (segment << 4) | ((magnitude >> (segment + 3)) & 0x0F);
  return static_cast<std::uint8_t>(~bits);
}

std::int16_t FromMuLaw(std::uint8_t byte) {
  const int bits = static_cast<std::uint8_t>(~byte);
  const int magnitude = ((((bits & 0x0F) << 3) + 0x84) << ((bits >> 4) & 7)) - 0x84;
  return static_cast<std::int16_t>((bits & 0x80) != 0 ? -magnitude : magnitude);
}

std::uint8_t ALawByte(std::int16_t sample) {
  const int magnitude = (sample < 0 ? -static_cast<int>(sample) - 1 : sample) >> 3;
  int segment = 0;
  while (segment < 7 && (magnitude >> (segment + 5)) != 0) {
    ++segment;
  }
  const int step = segment < 2 ? 1 : segment;
  const int bits = (segment << 4) | ((magnitude >> step) & 0x0F);
  return static_cast<std::uint8_t>(bits ^ (sample < 0 ? 0x55 : 0xD5));
}

std::int16_t FromALaw(std::uint8_t byte) {
  const int bits = byte ^ 0x55;
  const int segment = (bits >> 4) & 7;
  int magnitude = ((bits & 0x0F) << 4) + (segment == 0 ? 8 : 0x108);
  magnitude <<= std::max(segment - 1, 0);
  return static_cast<std::int16_t>((bits & 0x80) != 0 ? magnitude : -magnitude);
}

std::uint32_t Word(const std::string& bytes, std::size_t at, std::size_t size) {
  std::uint32_t word = 0;
  for (std::size_t i = 0; i < size; ++i) {
    word |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
  }
  return word;
}

void Put(std::string& bytes, std::uint32_t word, int size) {
  for (int i = 0; i < size; ++i) {
    bytes += static_cast<char>((word >> (8 * i)) & 0xFF);
  }
}

} // namespace

std::size_t BytesPerSample(Coding coding) {
  return coding == Coding::Signed16 ? 2 : 1;
}

std::string Encode(Coding coding, const Samples& samples) {
  std::string bytes;
  for (const std::int16_t sample : samples) {
    const int high = sample >> 8;
    switch (coding) {
    case Coding::Unsigned8:
      bytes += static_cast<char>(high + 128);
      break;
    case Coding::Signed8:
      bytes += static_cast<char>(high);
      break;
    case Coding::Signed16:
      Put(bytes, static_cast<std::uint16_t>(sample), 2);
      break;
    case Coding::MuLaw:
      bytes += static_cast<char>(MuLawByte(sample));
      break;
    case Coding::ALaw:
      bytes += static_cast<char>(ALawByte(sample));
      break;
    case Coding::Adpcm:
      bytes += '\0';
      break;
    }
  }
  return bytes;
}

Samples Decode(Coding coding, std::string_view bytes) {
  Samples samples;
  if (coding == Coding::Signed16) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      samples.push_back(static_cast<std::int16_t>(static_cast<unsigned char>(bytes[i]) |
                                                  static_cast<unsigned char>(bytes[i + 1]) << 8));
    }
    return samples;
  }
  for (const char character : bytes) {
    const auto byte = static_cast<std::uint8_t>(character);
    switch (coding) {
    case Coding::Unsigned8:
      samples.push_back(static_cast<std::int16_t>((byte - 128) * 256));
      break;
    case Coding::Signed8:
      samples.push_back(static_cast<std::int16_t>(static_cast<std::int8_t>(byte) * 256));
      break;
    case Coding::MuLaw:
      samples.push_back(FromMuLaw(byte));
      break;
    case Coding::ALaw:
      samples.push_back(FromALaw(byte));
      break;
    default:
      samples.push_back(0);
      break;
    }
  }
  return samples;
}

std::int16_t Tone::At(std::int64_t index) const {
  constexpr double Amplitude = 4000; // some -18 dB of full scale for each frequency
  const double seconds = static_cast<double>(index) / LineRate;
  if (!cadence.empty()) {
    double rest = std::fmod(seconds, std::accumulate(cadence.begin(), cadence.end(), 0.0));
    std::size_t part = 0;
    while (part + 1 < cadence.size() && rest >= cadence[part]) {
      rest -= cadence[part++];
    }
    if (part % 2 == 1) {
      return 0;
    }
  }
  double sum = 0;
  for (const double frequency : frequencies) {
    sum += Amplitude * std::sin(2 * std::numbers::pi * frequency * seconds);
  }
  return static_cast<std::int16_t>(std::clamp(sum, -32767.0, 32767.0));
}

Samples Tone::First(double seconds) const {
  Samples samples;
  for (std::int64_t i = 0; i < static_cast<std::int64_t>(seconds * LineRate); ++i) {
    samples.push_back(At(i));
  }
  return samples;
}

Tone Dtmf(char key) {
  constexpr std::string_view Keys = "123A456B789C*0#D";
  constexpr double Rows[] = {697, 770, 852, 941};
  constexpr double Columns[] = {1209, 1336, 1477, 1633};
  const std::size_t at = Keys.find(key);
  return at == std::string_view::npos ? Tone{} : Tone{{Rows[at / 4], Columns[at % 4]}, {}};
}

bool WriteWave(const std::filesystem::path& path, const Samples& samples) {
  const auto size = static_cast<std::uint32_t>(samples.size() * 2);
  std::string bytes = "RIFF";
  Put(bytes, size + WaveHeader - 8, 4);
  bytes += "WAVEfmt ";
  Put(bytes, 16, 4);
  Put(bytes, 1, 2); // PCM
  Put(bytes, 1, 2); // one channel
  Put(bytes, LineRate, 4);
  Put(bytes, LineRate * 2, 4);
  Put(bytes, 2, 2);
  Put(bytes, 16, 2);
  bytes += "data";
  Put(bytes, size, 4);
  bytes += Encode(Coding::Signed16, samples);
  std::ofstream file(path, std::ios::binary);
  file << bytes;
  return static_cast<bool>(file.flush());
}

Samples ReadWave(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  std::size_t at = 12;
  while (at + 8 <= bytes.size()) {
    const std::size_t size = Word(bytes, at + 4, 4);
    if (bytes.compare(at, 4, "data") == 0) {
      return Decode(Coding::Signed16, std::string_view(bytes).substr(at + 8, size));
    }
    at += 8 + size + size % 2;
  }
  return {};
}

} // namespace kelmio::emulated

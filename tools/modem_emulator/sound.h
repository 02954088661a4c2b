#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace kelmio::emulated {

// The line's sound is signed, 16 bits, 8000 samples a second.
inline constexpr int LineRate = 8000;
using Samples = std::vector<std::int16_t>;

// How samples stand on the wire between host and modem.
enum class Coding { Unsigned8, Signed8, Signed16, MuLaw, ALaw, Adpcm };

// How many bytes a sample takes.
std::size_t BytesPerSample(Coding coding);

// `Adpcm` can't be coded: it gives zeros, and is there only to be advertised.
std::string Encode(Coding coding, const Samples& samples);
Samples Decode(Coding coding, std::string_view bytes);

// A tone of up to a few frequencies with its cadence, on and off in turn in seconds; no cadence means steady.
struct Tone {
  std::vector<double> frequencies;
  std::vector<double> cadence;

  // The sample at `index` since the tone began.
  std::int16_t At(std::int64_t index) const;
  Samples First(double seconds) const;
};

// The two frequencies of a key out of 0-9 * # A-D.
Tone Dtmf(char key);

// Mono PCM wave files with 16 bits and 8000 samples a second. False or nothing when the file can't be used.
bool WriteWave(const std::filesystem::path& path, const Samples& samples);
Samples ReadWave(const std::filesystem::path& path);

} // namespace kelmio::emulated

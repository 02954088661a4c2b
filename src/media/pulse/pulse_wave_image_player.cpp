#include "media/pulse/pulse_wave_image_player.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "media/pulse/pulse_playback.h"
#include "media/pulse/pulse_thread.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;

constexpr PulsePatience kPatience{1s, 2s};

// The fields of a wave file's header: "Multimedia Programming Interface and Data Specifications 1.0", IBM and
// Microsoft 1991.
constexpr std::size_t kRiffHeader = 12;
constexpr std::size_t kChunkHeader = 8;
constexpr std::size_t kFormatSize = 16;
constexpr std::uint32_t kPcm = 1;

class Bytes {
public:
  explicit Bytes(std::span<const std::byte> bytes) : bytes_(bytes) {}
  /// A number of `size` bytes, the least significant first.
  std::uint32_t Number(std::size_t place, std::size_t size) const {
    std::uint32_t number = 0;
    for (std::size_t i = size; i-- > 0;)
      number = number << 8 | std::to_integer<std::uint32_t>(bytes_[place + i]);
    return number;
  }
  bool Has(std::size_t place, std::string_view word) const {
    return std::memcmp(bytes_.data() + place, word.data(), word.size()) == 0;
  }

private:
  std::span<const std::byte> bytes_;
};

struct Sound {
  pa_sample_spec format{};
  std::vector<std::byte> samples; // whole frames
};

std::optional<pa_sample_spec> FormatOf(const Bytes& chunk) {
  const std::uint32_t bits = chunk.Number(14, 2);
  if (chunk.Number(0, 2) != kPcm || (bits != 8 && bits != 16))
    return {};
  const std::uint32_t channels = chunk.Number(2, 2);
  if (channels < 1 || channels > 2)
    return {};
  const pa_sample_spec format{bits == 8 ? PA_SAMPLE_U8 : PA_SAMPLE_S16LE, chunk.Number(4, 4),
                              static_cast<std::uint8_t>(channels)};
  return pa_sample_spec_valid(&format) ? std::optional(format) : std::nullopt;
}

std::optional<Sound> Parse(std::span<const std::byte> image) {
  const Bytes bytes(image);
  if (image.size() < kRiffHeader || !bytes.Has(0, "RIFF") || !bytes.Has(8, "WAVE"))
    return {};
  std::optional<pa_sample_spec> format;
  for (std::size_t place = kRiffHeader; place + kChunkHeader <= image.size();) {
    const std::size_t start = place + kChunkHeader;
    const std::size_t told = bytes.Number(place + 4, 4);
    const std::size_t size = std::min(told, image.size() - start);
    if (bytes.Has(place, "fmt ") && size >= kFormatSize)
      format = FormatOf(Bytes(image.subspan(start, size)));
    if (bytes.Has(place, "data")) {
      if (!format)
        return {};
      const auto data = image.subspan(start, size - size % pa_frame_size(&*format));
      return Sound{*format, {data.begin(), data.end()}};
    }
    place = start + size + size % 2; // chunks begin at even places
  }
  return {};
}

class ImageSource : public PulseSource {
public:
  explicit ImageSource(Sound sound) : sound_(std::move(sound)) {}
  pa_sample_spec Format() const override { return sound_.format; }
  std::size_t Read(std::span<std::byte> out) override {
    const auto left = std::span<const std::byte>(sound_.samples).subspan(read_);
    const std::size_t count = std::min(left.size(), out.size());
    std::copy_n(left.begin(), count, out.begin());
    read_ += count;
    return count;
  }

private:
  const Sound sound_;
  std::size_t read_ = 0;
};

} // namespace

bool PulseWaveImagePlayer::Play(std::span<const std::byte> image) {
  std::optional<Sound> sound = Parse(image);
  if (!sound || sound->samples.empty())
    return false;
  const auto length = std::chrono::ceil<std::chrono::milliseconds>(
      std::chrono::microseconds(pa_bytes_to_usec(sound->samples.size(), &sound->format)));
  const auto progress = std::make_shared<PulseProgress>();
  const PulseThread thread(std::make_unique<PulsePlayback>(std::make_unique<ImageSource>(std::move(*sound)),
                                                           "Short sound", progress, kPatience));
  // The limits are for a library that hangs itself; otherwise the playback keeps to its own patience.
  if (progress->WaitForBegin(kPatience.opening) == PulseProgress::State::Opening)
    return false;
  return progress->WaitForEnd(length + kPatience.silence) == PulseProgress::State::Over;
}

} // namespace kelmio

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

#include <sndfile.h>

#include "media/wave_file.h"

namespace kelmio {
namespace {

// What a header may claim and still be sound; beyond it the rate can't be converted to a line's.
constexpr int kLowestRate = 1000;
constexpr int kHighestRate = 1'000'000;

std::int16_t ToSample(float value) {
  using Limits = std::numeric_limits<std::int16_t>;
  const float scaled = value * 32768.0F;
  if (!(scaled > static_cast<float>(Limits::min()))) // catches what is not a number, too
    return std::isnan(scaled) ? std::int16_t{0} : Limits::min();
  if (scaled >= static_cast<float>(Limits::max()))
    return Limits::max();
  return static_cast<std::int16_t>(std::lrint(scaled));
}

} // namespace

void CloseSndfile::operator()(sf_private_tag* file) const noexcept {
  sf_close(file);
}

std::optional<long> WaveLength(const std::string& path) {
  SF_INFO info{};
  const SndfileHandle file(sf_open(path.c_str(), SFM_READ, &info));
  if (!file || info.samplerate <= 0)
    return std::nullopt;
  // In two steps, since an absurd header must not overflow the product.
  const sf_count_t seconds = info.frames / info.samplerate;
  const sf_count_t rest = info.frames % info.samplerate;
  return static_cast<long>(seconds * 1000 + rest * 1000 / info.samplerate);
}

std::unique_ptr<WaveReader> WaveReader::Open(const std::string& path, std::string& error) {
  SF_INFO info{};
  SndfileHandle file(sf_open(path.c_str(), SFM_READ, &info));
  if (!file) {
    error = sf_strerror(nullptr);
    return nullptr;
  }
  if (info.samplerate < kLowestRate || info.samplerate > kHighestRate || info.channels < 1) {
    error = "not a sound that can be played";
    return nullptr;
  }
  if (info.frames <= 0) {
    error = "the file holds no sound";
    return nullptr;
  }
  return std::unique_ptr<WaveReader>(new WaveReader(std::move(file), info.samplerate, info.channels, info.frames));
}

WaveReader::WaveReader(SndfileHandle file, int rate, int channels, std::int64_t count)
    : file_(std::move(file)), rate_(rate), left_(count), channels_(static_cast<std::size_t>(channels)) {}

void WaveReader::Skip(std::int64_t count) {
  count = std::clamp<std::int64_t>(count, 0, left_);
  if (sf_seek(file_.get(), count, SEEK_CUR) >= 0) {
    left_ -= count;
    return;
  }
  std::array<std::int16_t, 4096> passed;
  while (count > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(count, passed.size()));
    const std::size_t got = Read(std::span(passed).first(wanted));
    if (got == 0)
      return;
    count -= static_cast<std::int64_t>(got);
  }
}

std::size_t WaveReader::Read(std::span<std::int16_t> out) {
  frames_.resize(out.size() * channels_);
  const sf_count_t got = sf_readf_float(file_.get(), frames_.data(), static_cast<sf_count_t>(out.size()));
  const auto count = static_cast<std::size_t>(std::max<sf_count_t>(got, 0));
  // A file may hold less than its header says.
  left_ = count == 0 ? 0 : std::max<std::int64_t>(left_ - got, 0);
  for (std::size_t i = 0; i < count; ++i) {
    float sum = 0;
    for (std::size_t channel = 0; channel < channels_; ++channel)
      sum += frames_[i * channels_ + channel];
    out[i] = ToSample(sum / static_cast<float>(channels_));
  }
  return count;
}

} // namespace kelmio

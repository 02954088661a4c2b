// Wave files as streams of mono 16-bit samples.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "telephony/tapi_control/wave_format.h"

struct sf_private_tag;

namespace kelmio {

/// Length of a wave file in milliseconds, rounded down; nothing when it can't be read. Any thread.
std::optional<long> WaveLength(const std::string& path);

/// Puts the entry of a file in its folder on the disk itself, as far as the folder may be opened. Any thread.
void SyncFolderOf(const std::string& path);

struct CloseSndfile {
  void operator()(sf_private_tag* file) const noexcept;
};
using SndfileHandle = std::unique_ptr<sf_private_tag, CloseSndfile>;

/// Reads a sound file of any coding, rate and number of channels as mono. One thread at a time.
class WaveReader {
public:
  /// Null when the file can't be opened, is no sound file, or holds no sample; `error` then says why.
  static std::unique_ptr<WaveReader> Open(const std::string& path, std::string& error);

  int Rate() const { return rate_; }
  /// Samples from here to the end of the file.
  std::int64_t Left() const { return left_; }
  /// Passes over samples, at most to the end. A coding without places of its own (GSM 6.10) is decoded on the way,
  /// some ten minutes of it in a quarter of a second.
  void Skip(std::int64_t count);
  /// Fills the front of `out`, all channels mixed into one, and gives the count; 0 at the end of the file.
  std::size_t Read(std::span<std::int16_t> out);

private:
  WaveReader(SndfileHandle file, int rate, int channels, std::int64_t count);

  SndfileHandle file_;
  int rate_;
  std::int64_t left_;
  std::size_t channels_;
  std::vector<float> frames_;
};

/// Writes a wave file whose header is true whenever asked, so that what has been written is never lost to a
/// crash. Once the disk refuses, the file ends after the last whole block that it took and stays playable.
/// One thread at a time.
class WaveWriter {
public:
  /// Makes the file, replacing an existing one, and puts a header and its folder entry on disk. Null when
  /// that fails; `error` then says why. `format` is recordable; a file in IMA ADPCM gets the usual block
  /// size of its rate, whatever size `format` names.
  static std::unique_ptr<WaveWriter> Create(const std::string& path, const WaveFormatRecord& format,
                                            std::string& error);
  /// Finishes the file.
  ~WaveWriter();
  WaveWriter(const WaveWriter&) = delete;
  WaveWriter& operator=(const WaveWriter&) = delete;

  /// Adds samples, the same on each channel. False when the disk has refused, now or before.
  bool Write(std::span<const std::int16_t> samples);
  /// Brings the header up to date with what has been written. A coding in blocks holds back less than one.
  bool UpdateHeader();
  /// Puts what has been written on the disk itself.
  bool Sync();
  /// Writes what is left, closes and syncs the file. Nothing can be written afterwards.
  bool Finish();
  /// Why the disk refused; empty while all is well.
  const std::string& Error() const { return error_; }

private:
  struct Storage; // the bytes of the file, below libsndfile

  WaveWriter(std::unique_ptr<Storage> storage, SndfileHandle file, const WaveFormatRecord& format);
  bool Check(bool done);

  std::unique_ptr<Storage> storage_; // outlives file_, which writes to it when it closes
  SndfileHandle file_;
  WaveFormatRecord format_;
  std::uint64_t given_ = 0; // samples
  std::vector<std::int16_t> frames_;
  std::string error_;
};

} // namespace kelmio

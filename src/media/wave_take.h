// A recording that replaces a file only once it is whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "media/wave_file.h"

namespace kelmio {

/// Mono 16-bit samples, written to a temporary file beside the target. The temporary file goes with the object; after a
/// crash it is left and the next take for that target replaces it. One thread at a time.
class WaveTake {
public:
  /// Null when the temporary file can't be made; `error` then says why.
  static std::unique_ptr<WaveTake> Start(const std::string& target, int rate, std::string& error);
  ~WaveTake();
  WaveTake(const WaveTake&) = delete;
  WaveTake& operator=(const WaveTake&) = delete;

  /// False when the disk has refused; `Error` then says why.
  bool Write(std::span<const std::int16_t> samples);
  /// Samples written.
  std::size_t Count() const { return count_; }
  /// Puts the recording in the target's place, on the disk itself. On failure the target stays as it was. Nothing can
  /// be written afterwards.
  bool Save();
  const std::string& Error() const { return error_; }

private:
  WaveTake(std::string target, std::string beside, std::unique_ptr<WaveWriter> writer);

  const std::string target_;
  const std::string beside_; // the temporary file
  std::unique_ptr<WaveWriter> writer_;
  std::size_t count_ = 0;
  std::string error_;
};

} // namespace kelmio

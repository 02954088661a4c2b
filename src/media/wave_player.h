// A wave file on its way into the line.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "media/file_worker.h"
#include "media/resampler.h"
#include "media/sample_ring.h"
#include "media/wave_file.h"

namespace kelmio {

/// Reads ahead on the worker's thread, gives samples on the sound thread.
class WavePlayer : public FileStream {
public:
  /// Opens the file and reads the first seconds, so that the very first frame carries sound. Null when there
  /// is no sound in it; `error` then says why.
  static std::shared_ptr<WavePlayer> Open(const std::string& path, std::string& error);

  /// Sound thread. Fills the frame from the file, then with silence. Where the disk is late the frame has a
  /// gap, but no sample is left out.
  void Give(std::span<std::int16_t> frame, int rate) noexcept;
  /// Sound thread. True once the last sample has been given.
  bool Ended() const noexcept { return ended_; }

  void Service() override;

private:
  explicit WavePlayer(std::unique_ptr<WaveReader> reader);

  std::unique_ptr<WaveReader> reader_; // worker's; gone once all has been read
  const int file_rate_;
  SampleRing ring_;
  std::atomic<bool> all_read_{false}; // set after the last sample is in the ring
  Resampler resampler_;
  std::array<std::int16_t, 512> pending_{}; // taken from the ring, not yet given
  std::size_t pending_begin_ = 0;
  std::size_t pending_end_ = 0;
  bool pending_is_last_ = false;
  bool ended_ = false;
};

} // namespace kelmio

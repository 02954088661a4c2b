// A call on its way into a wave file.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "media/direction_mixer.h"
#include "media/file_worker.h"
#include "media/reporter.h"
#include "media/resampler.h"
#include "media/sample_ring.h"
#include "media/wave_file.h"

namespace kelmio {

/// Takes both directions on the sound thread, writes them on the worker's thread, and is finished on the
/// user interface thread or, at the length limit or when the disk refuses, by the worker. Whoever finishes
/// it reports `RecordDone`, once.
///
/// The header is true after each service, and the file is synced once a second: a crash costs what the ring
/// held, a power cut at most some second more.
class WaveRecorder : public FileStream {
public:
  /// Makes the file. Null when that fails; `error` then says why.
  static std::shared_ptr<WaveRecorder> Create(const RecordRequest& request, Reporter reporter, std::string& error);

  /// Sound thread. Samples of one direction, at `rate` samples per second.
  void Put(Direction direction, std::span<const std::int16_t> samples, int rate) noexcept;
  /// No further `Put`: what resamplers and mixer still hold is recorded too. Under the sound thread's lock.
  void EndInput() noexcept;

  void Service() override;
  /// Writes what is left and closes the file. Any thread; nothing happens when it is closed already.
  void Finish();
  bool Finished() const noexcept { return finished_; }

private:
  WaveRecorder(const RecordRequest& request, Reporter reporter, std::unique_ptr<WaveWriter> writer);

  FixedRate& Converter(Direction direction) { return direction == Direction::Far ? far_ : near_; }
  void Mix(Direction direction, std::span<const std::int16_t> samples) noexcept;
  void EmptyMixer() noexcept;
  // Under file_mutex_:
  void Drain();
  void AddToBlock(std::span<const std::int16_t> samples);
  void PostBlock();
  void ReportLoss();
  void Close();

  const std::string path_;
  const int rate_;
  const std::optional<std::uint64_t> limit_; // samples
  const std::size_t block_samples_;          // 0: no blocks wanted
  const Reporter reporter_;

  // Sound thread, under its lock.
  FixedRate far_;
  FixedRate near_;
  DirectionMixer mixer_;
  std::uint64_t accepted_ = 0; // samples put into the ring

  SampleRing ring_;
  std::atomic<std::uint64_t> lost_{0};     // samples that found the ring full
  std::atomic<bool> limit_reached_{false}; // set after the last sample is in the ring
  std::atomic<bool> finished_{false};

  std::mutex file_mutex_; // never taken by the sound thread
  std::unique_ptr<WaveWriter> writer_;
  std::chrono::steady_clock::time_point synced_at_;
  std::uint64_t loss_reported_ = 0;
  std::vector<std::int16_t> block_;
  std::shared_ptr<std::atomic<int>> blocks_under_way_ = std::make_shared<std::atomic<int>>(0);
};

} // namespace kelmio

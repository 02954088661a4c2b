#include "media/wave_recorder.h"

#include <algorithm>
#include <array>

namespace kelmio {
namespace {

constexpr std::size_t kSecondsHeld = 10; // how long the disk may be late
constexpr auto kSyncInterval = std::chrono::seconds(1);
// More than the longest frame and the usual unevenness of a network.
constexpr std::size_t kLeadsPerSecond = 5;
// Blocks are for the eye: a busy user interface gets the next one, not all of them late.
constexpr int kMostBlocksUnderWay = 4;

std::optional<std::uint64_t> LimitOf(const RecordRequest& request) {
  if (request.max_seconds <= 0)
    return std::nullopt;
  return static_cast<std::uint64_t>(request.max_seconds) * request.format.samples_per_second;
}

} // namespace

std::shared_ptr<WaveRecorder> WaveRecorder::Create(const RecordRequest& request, Reporter reporter,
                                                   std::string& error) {
  auto writer = WaveWriter::Create(request.path, request.format, error);
  if (!writer)
    return nullptr;
  return std::shared_ptr<WaveRecorder>(new WaveRecorder(request, std::move(reporter), std::move(writer)));
}

WaveRecorder::WaveRecorder(const RecordRequest& request, Reporter reporter, std::unique_ptr<WaveWriter> writer)
    : path_(request.path), rate_(static_cast<int>(request.format.samples_per_second)), limit_(LimitOf(request)),
      block_samples_(request.report_blocks ? std::max<std::size_t>(request.block_bytes / sizeof(std::int16_t), 1) : 0),
      reporter_(std::move(reporter)), far_(rate_), near_(rate_),
      mixer_(request.format.samples_per_second / kLeadsPerSecond),
      ring_(kSecondsHeld * request.format.samples_per_second), writer_(std::move(writer)),
      synced_at_(std::chrono::steady_clock::now()) {}

void WaveRecorder::Put(Direction direction, std::span<const std::int16_t> samples, int rate) noexcept {
  Converter(direction).Put(samples, rate, [&](std::span<const std::int16_t> converted) { Mix(direction, converted); });
  EmptyMixer();
}

void WaveRecorder::EndInput() noexcept {
  for (const Direction direction : {Direction::Far, Direction::Near})
    Converter(direction).End([&](std::span<const std::int16_t> converted) { Mix(direction, converted); });
  mixer_.Flush();
  EmptyMixer();
}

void WaveRecorder::Mix(Direction direction, std::span<const std::int16_t> samples) noexcept {
  while (!samples.empty()) {
    samples = samples.subspan(mixer_.Add(direction, samples));
    if (!samples.empty())
      EmptyMixer();
  }
}

void WaveRecorder::EmptyMixer() noexcept {
  std::array<std::int16_t, 1024> mixed;
  while (const std::size_t count = mixer_.Take(mixed)) {
    if (finished_ || limit_reached_)
      continue; // the call goes on, the recording does not
    const std::uint64_t wanted = limit_ ? std::min<std::uint64_t>(count, *limit_ - accepted_) : count;
    const std::size_t put = ring_.Put(std::span(mixed).first(static_cast<std::size_t>(wanted)));
    accepted_ += put;
    if (put < wanted)
      lost_ += wanted - put;
    if (limit_ && accepted_ == *limit_)
      limit_reached_.store(true, std::memory_order_release);
  }
}

void WaveRecorder::Service() {
  const std::lock_guard lock(file_mutex_);
  if (finished_)
    return;
  const bool complete = limit_reached_.load(std::memory_order_acquire); // asked before the ring is
  Drain();
  ReportLoss();
  if (complete || !writer_->Error().empty()) {
    Close();
    return;
  }
  writer_->UpdateHeader();
  const auto now = std::chrono::steady_clock::now();
  if (now - synced_at_ >= kSyncInterval) {
    synced_at_ = now;
    writer_->Sync();
  }
}

void WaveRecorder::Finish() {
  const std::lock_guard lock(file_mutex_);
  if (finished_)
    return;
  Drain();
  ReportLoss();
  Close();
}

void WaveRecorder::Drain() {
  std::array<std::int16_t, 4096> chunk;
  while (const std::size_t count = ring_.Take(chunk)) {
    const auto samples = std::span<const std::int16_t>(chunk).first(count);
    if (!writer_->Write(samples))
      return;
    AddToBlock(samples);
  }
}

void WaveRecorder::AddToBlock(std::span<const std::int16_t> samples) {
  while (block_samples_ != 0 && !samples.empty()) {
    const std::size_t count = std::min(samples.size(), block_samples_ - block_.size());
    block_.insert(block_.end(), samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(count));
    samples = samples.subspan(count);
    if (block_.size() == block_samples_)
      PostBlock();
  }
}

void WaveRecorder::PostBlock() {
  if (blocks_under_way_->fetch_add(1) < kMostBlocksUnderWay)
    reporter_.Post([samples = std::move(block_), under_way = blocks_under_way_](ReportTarget& target) {
      --*under_way;
      target.events.Block(std::as_bytes(std::span(samples)));
    });
  else
    --*blocks_under_way_;
  block_.clear();
}

void WaveRecorder::ReportLoss() {
  const std::uint64_t lost = lost_;
  if (lost == loss_reported_)
    return;
  const auto milliseconds = (lost - loss_reported_) * 1000 / static_cast<std::uint64_t>(rate_);
  loss_reported_ = lost;
  reporter_.Post([text = "The disk is too slow: " + std::to_string(milliseconds) + " ms of the recording " + path_ +
                         " were lost"](ReportTarget& target) { target.events.Trouble(text); });
}

void WaveRecorder::Close() {
  writer_->Finish();
  if (!writer_->Error().empty())
    reporter_.Post([text = "Cannot write the recording " + path_ + ": " + writer_->Error()](ReportTarget& target) {
      target.events.Trouble(text);
    });
  writer_.reset();
  finished_ = true;
  reporter_.Post([](ReportTarget& target) { target.events.RecordDone(); });
}

} // namespace kelmio

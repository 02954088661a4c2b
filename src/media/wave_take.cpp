#include "media/wave_take.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace kelmio {

std::unique_ptr<WaveTake> WaveTake::Start(const std::string& target, int rate, std::string& error) {
  WaveFormatRecord format;
  format.samples_per_second = static_cast<std::uint32_t>(rate);
  format.average_bytes_per_second = format.samples_per_second * format.block_align;
  std::string beside = target + ".recording";
  std::unique_ptr<WaveWriter> writer = WaveWriter::Create(beside, format, error);
  if (!writer)
    return nullptr;
  return std::unique_ptr<WaveTake>(new WaveTake(target, std::move(beside), std::move(writer)));
}

WaveTake::WaveTake(std::string target, std::string beside, std::unique_ptr<WaveWriter> writer)
    : target_(std::move(target)), beside_(std::move(beside)), writer_(std::move(writer)) {}

WaveTake::~WaveTake() {
  if (writer_)
    ::unlink(beside_.c_str());
}

bool WaveTake::Write(std::span<const std::int16_t> samples) {
  if (!writer_ || !writer_->Write(samples)) {
    error_ = writer_ ? writer_->Error() : error_;
    return false;
  }
  count_ += samples.size();
  return true;
}

bool WaveTake::Save() {
  if (!writer_)
    return false;
  if (!writer_->Finish()) {
    error_ = writer_->Error();
    return false;
  }
  if (std::rename(beside_.c_str(), target_.c_str()) != 0) {
    error_ = std::generic_category().message(errno);
    return false;
  }
  writer_.reset(); // the name beside the target is free by now
  SyncFolderOf(target_);
  return true;
}

} // namespace kelmio

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <system_error>

#include <sndfile.h>

#include "media/wave_file.h"

namespace kelmio {
namespace {

// The sizes in a wave file have 32 bits; the header and a last block need their place too.
constexpr off_t kLargestFile = off_t{std::numeric_limits<std::uint32_t>::max()} - 65536;
// The format chunk comes first, so these always have their place.
constexpr std::size_t kBlockAlignPlace = 32;
constexpr std::size_t kBlockSamplesPlace = 38; // of the codings in blocks

int SndfileFormat(const WaveFormatRecord& format) {
  switch (format.format_tag) {
  case wave_format_tag::kALaw:
    return SF_FORMAT_WAV | SF_FORMAT_ALAW;
  case wave_format_tag::kMuLaw:
    return SF_FORMAT_WAV | SF_FORMAT_ULAW;
  case wave_format_tag::kGsm610:
    return SF_FORMAT_WAV | SF_FORMAT_GSM610;
  case wave_format_tag::kImaAdpcm:
    return SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM;
  default:
    return SF_FORMAT_WAV | (format.bits_per_sample == 8 ? SF_FORMAT_PCM_U8 : SF_FORMAT_PCM_16);
  }
}

std::string ErrorText(int error) {
  return std::generic_category().message(error);
}

} // namespace

void SyncFolderOf(const std::string& path) {
  std::string folder = std::filesystem::path(path).parent_path().string();
  if (folder.empty())
    folder = ".";
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0)
    return; // the file itself is there: a folder that may not be opened is no reason not to record
  ::fsync(fd);
  ::close(fd);
}

// libsndfile writes through this. After the first refusal of the disk it freezes the file at its last whole
// block: the header can still be written, but nothing more is added, so that header and sound agree.
struct WaveWriter::Storage {
  explicit Storage(int descriptor) : fd(descriptor) {}
  ~Storage() { ::close(fd); }
  Storage(const Storage&) = delete;
  Storage& operator=(const Storage&) = delete;

  sf_count_t Size() const {
    struct stat info {};
    return ::fstat(fd, &info) == 0 ? info.st_size : 0;
  }

  sf_count_t Seek(sf_count_t offset, int whence) {
    position = whence == SEEK_SET ? offset : whence == SEEK_CUR ? position + offset : Size() + offset;
    return position;
  }

  sf_count_t Write(const char* bytes, sf_count_t count) {
    const sf_count_t allowed = error != 0 ? std::clamp<sf_count_t>(Size() - position, 0, count) : count;
    sf_count_t done = 0;
    while (done < allowed) {
      const auto left = static_cast<std::size_t>(allowed - done);
      const ssize_t written =
          position + allowed > kLargestFile ? (errno = EFBIG, -1) : ::pwrite(fd, bytes + done, left, position + done);
      if (written > 0)
        done += written;
      else if (written == 0 || errno != EINTR)
        return Refused(done, written == 0 ? ENOSPC : errno);
    }
    position += done;
    return done;
  }

  // Gives how many of the bytes just written stay.
  sf_count_t Refused(sf_count_t done, int reason) {
    if (error == 0)
      error = reason;
    if (data_start == 0)
      return 0;
    const sf_count_t end = Size();
    const sf_count_t whole = end <= data_start ? end : data_start + (end - data_start) / block * block;
    if (::ftruncate(fd, whole) != 0)
      error = errno;
    const sf_count_t kept = std::clamp<sf_count_t>(whole - position, 0, done);
    position += kept;
    return kept;
  }

  // Learns from the header as libsndfile has written it what lies where.
  bool ReadLayout(const WaveFormatRecord& format) {
    std::string header(static_cast<std::size_t>(Size()), '\0');
    if (header.size() < kBlockSamplesPlace + 2 ||
        ::pread(fd, header.data(), header.size(), 0) != static_cast<ssize_t>(header.size()))
      return false;
    const auto word = [&header](std::size_t place) {
      return static_cast<unsigned char>(header[place]) + 256 * static_cast<unsigned char>(header[place + 1]);
    };
    data_start = static_cast<off_t>(header.size());
    block = std::max(1, word(kBlockAlignPlace));
    if (format.format_tag == wave_format_tag::kImaAdpcm || format.format_tag == wave_format_tag::kGsm610)
      block_samples = word(kBlockSamplesPlace);
    if (const std::size_t fact = header.find("fact", kBlockAlignPlace); fact != std::string::npos)
      count_place = static_cast<off_t>(fact + 8);
    return true;
  }

  // libsndfile counts samples that are still on their way to the disk, and miscounts those of two channels.
  void WriteSampleCount(std::uint64_t given) {
    if (count_place == 0)
      return;
    const auto stored = static_cast<std::uint64_t>(std::max<off_t>(Size() - data_start, 0) / block * block_samples);
    const std::uint64_t count = std::min(given, stored);
    unsigned char bytes[4];
    for (unsigned i = 0; i < sizeof bytes; ++i)
      bytes[i] = static_cast<unsigned char>(count >> (8 * i) & 0xFFU);
    if (::pwrite(fd, bytes, sizeof bytes, count_place) != sizeof bytes && error == 0)
      error = errno;
  }

  const int fd;
  off_t position = 0;
  off_t data_start = 0;    // 0 until the header is known
  off_t block = 1;         // bytes that stand or fall together,
  off_t block_samples = 1; // and the samples of a channel in them
  off_t count_place = 0;   // of the count of samples in the header; 0 when the format has none
  int error = 0;           // errno of the first refusal
};

std::unique_ptr<WaveWriter> WaveWriter::Create(const std::string& path, const WaveFormatRecord& format,
                                               std::string& error) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) {
    error = ErrorText(errno);
    return nullptr;
  }
  auto storage = std::make_unique<Storage>(fd);
  // Says to every copy of the program that the file grows still; the lock ends with the descriptor.
  ::flock(fd, LOCK_SH | LOCK_NB);
  SF_VIRTUAL_IO calls{};
  calls.get_filelen = [](void* user) { return static_cast<Storage*>(user)->Size(); };
  calls.seek = [](sf_count_t offset, int whence, void* user) {
    return static_cast<Storage*>(user)->Seek(offset, whence);
  };
  calls.read = [](void*, sf_count_t, void*) { return sf_count_t{0}; };
  calls.write = [](const void* bytes, sf_count_t count, void* user) {
    return static_cast<Storage*>(user)->Write(static_cast<const char*>(bytes), count);
  };
  calls.tell = [](void* user) -> sf_count_t { return static_cast<Storage*>(user)->position; };

  SF_INFO info{};
  info.samplerate = static_cast<int>(format.samples_per_second);
  info.channels = format.channels;
  info.format = SndfileFormat(format);
  SndfileHandle file(sf_open_virtual(&calls, SFM_WRITE, &info, storage.get()));
  if (!file)
    error = sf_strerror(nullptr);
  else
    sf_command(file.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
  if (storage->error != 0)
    error = ErrorText(storage->error);
  if (error.empty() && !storage->ReadLayout(format))
    error = ErrorText(EIO);
  if (!error.empty()) {
    ::unlink(path.c_str()); // an empty file would pass for a recording
    return nullptr;
  }
  ::fsync(fd);
  SyncFolderOf(path);
  return std::unique_ptr<WaveWriter>(new WaveWriter(std::move(storage), std::move(file), format));
}

WaveWriter::WaveWriter(std::unique_ptr<Storage> storage, SndfileHandle file, const WaveFormatRecord& format)
    : storage_(std::move(storage)), file_(std::move(file)), format_(format) {}

WaveWriter::~WaveWriter() {
  Finish();
}

bool WaveWriter::Write(std::span<const std::int16_t> samples) {
  if (!file_ || storage_->error != 0)
    return false;
  frames_.clear();
  for (const std::int16_t sample : samples) {
    // A sample of 8 bits is cut from 16, not rounded; half a step more makes up for that.
    const bool eight_bit = format_.format_tag == wave_format_tag::kPcm && format_.bits_per_sample == 8;
    const auto value = eight_bit ? static_cast<std::int16_t>(std::min(sample + 128, 32767)) : sample;
    frames_.insert(frames_.end(), format_.channels, value);
  }
  given_ += samples.size();
  const auto count = static_cast<sf_count_t>(samples.size());
  return Check(sf_writef_short(file_.get(), frames_.data(), count) == count);
}

bool WaveWriter::UpdateHeader() {
  if (!file_)
    return false;
  sf_command(file_.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
  storage_->WriteSampleCount(given_);
  return Check(true);
}

bool WaveWriter::Sync() {
  const bool synced = ::fdatasync(storage_->fd) == 0;
  // Memory that can't be synced (a pipe, some network disks) is no failure of the recording.
  if (!synced && errno != EINVAL && errno != EROFS && storage_->error == 0)
    storage_->error = errno;
  return Check(true);
}

bool WaveWriter::Finish() {
  if (!file_)
    return error_.empty();
  file_.reset();
  storage_->WriteSampleCount(given_);
  return Sync();
}

bool WaveWriter::Check(bool done) {
  if (storage_->error == 0 && done)
    return true;
  if (error_.empty())
    error_ = storage_->error != 0 ? ErrorText(storage_->error) : sf_strerror(file_.get());
  return false;
}

} // namespace kelmio

#include "core/store_file.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelmio {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr std::size_t kBlockSize = 65536;
constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kAsUmaskSays = 0666;
// The other copy holds the lock for one write. One that is stopped in the midst of it must not freeze this one.
constexpr auto kLongestWaitForLock = 5s;
constexpr auto kPauseBetweenTries = 2ms;

/// An open file or folder, closed at the end of its scope.
class Descriptor {
public:
  Descriptor(const std::string& path, int flags, mode_t mode = 0)
      : fd_(::open(path.c_str(), flags | O_CLOEXEC, mode)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { Close(); }

  explicit operator bool() const { return fd_ >= 0; }
  int Get() const { return fd_; }

  bool Close() {
    const int fd = fd_;
    fd_ = -1;
    return fd < 0 || ::close(fd) == 0;
  }

private:
  int fd_;
};

// What a crash has left under that name is cleared away first.
Descriptor OpenNew(const std::string& path, mode_t mode) {
  ::unlink(path.c_str());
  return Descriptor(path, O_WRONLY | O_CREAT | O_EXCL, mode);
}

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR)
      continue;
    if (written <= 0)
      return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// Hands on the file block by block; false when it can't be read to its end or `take` says so.
template <class Take> bool ReadBlocks(int fd, Take take) {
  std::string block(kBlockSize, '\0');
  while (true) {
    const ssize_t count = ::read(fd, block.data(), block.size());
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      return count == 0;
    if (!take(std::string_view(block.data(), static_cast<std::size_t>(count))))
      return false;
  }
}

// Lets the file system copy on its own, which shares the blocks where it can. Wherever it stops, at the end or
// because it can't, both files stand at the same place.
void CopyInKernel(int from, int to, off_t size) {
  while (size > 0) {
    const ssize_t count = ::copy_file_range(from, nullptr, to, nullptr, static_cast<std::size_t>(size), 0);
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      return;
    size -= count;
  }
}

enum class ReadResult { Ok, Missing, Failed };

ReadResult ReadWhole(const std::string& path, std::string& bytes, struct stat& status) {
  // Not blocking: a pipe in a store's place must not hang the program.
  const Descriptor file(path, O_RDONLY | O_NONBLOCK);
  if (!file)
    return errno == ENOENT ? ReadResult::Missing : ReadResult::Failed;
  if (::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode))
    return ReadResult::Failed;
  bytes.reserve(static_cast<std::size_t>(status.st_size));
  const bool whole = ReadBlocks(file.Get(), [&](std::string_view block) {
    bytes += block;
    return true;
  });
  return whole ? ReadResult::Ok : ReadResult::Failed;
}

// The lock is taken on the folder itself: it survives the renaming of what is in it and leaves no file behind.
bool LockFolder(const Descriptor& folder) {
  const auto give_up = std::chrono::steady_clock::now() + kLongestWaitForLock;
  while (::flock(folder.Get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR)
      continue;
    if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= give_up)
      return false;
    std::this_thread::sleep_for(kPauseBetweenTries);
  }
  return true;
}

/// A file that is written beside its target and takes its place at the end; until then it can vanish.
class Replacement {
public:
  Replacement(std::string path, mode_t mode) : path_(std::move(path)), file_(OpenNew(path_, mode)) {}
  ~Replacement() {
    if (file_)
      ::unlink(path_.c_str());
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  explicit operator bool() const { return static_cast<bool>(file_); }
  int Get() const { return file_.Get(); }

  bool TakeThePlaceOf(const std::string& target) {
    bool good = ::fsync(file_.Get()) == 0;
    good = file_.Close() && good;
    good = good && std::rename(path_.c_str(), target.c_str()) == 0;
    if (!good)
      ::unlink(path_.c_str());
    return good;
  }

private:
  std::string path_;
  Descriptor file_;
};

fs::path FolderOf(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

// A name for each running copy of the program, so that they do not get into each other's way.
std::string NameBeside(const std::string& target) {
  return (FolderOf(target) / (".kelmio-" + std::to_string(::getpid()) + ".tmp")).string();
}

// A link to a file elsewhere stays a link: the file behind it is the one to replace.
fs::path BehindLinks(const std::string& path) {
  std::error_code error;
  const fs::path real = fs::canonical(path, error);
  return error ? fs::path(path) : real;
}

bool PutInPlace(const fs::path& target, std::string_view bytes, const struct stat* old, NewFileMode new_file_mode) {
  // One name is enough: the lock lets one writer in.
  const fs::path beside = FolderOf(target) / ("." + target.filename().string() + ".tmp");
  const bool owner_only = old != nullptr || new_file_mode == NewFileMode::OwnerOnly;
  Replacement file(beside.string(), owner_only ? kOwnerOnly : kAsUmaskSays);
  if (!file || !WriteAll(file.Get(), bytes))
    return false;
  if (old != nullptr) {
    // Only root can give a file back to another owner; for anyone else it stays the writer's.
    [[maybe_unused]] const int given = ::fchown(file.Get(), old->st_uid, old->st_gid);
    if (::fchmod(file.Get(), old->st_mode & kPermissionBits) != 0)
      return false;
  }
  return file.TakeThePlaceOf(target.string());
}

} // namespace

std::optional<std::string> ReadStoreFile(const std::string& path) {
  std::string bytes;
  struct stat status {};
  if (ReadWhole(path, bytes, status) != ReadResult::Ok)
    return std::nullopt;
  return bytes;
}

bool ChangeStoreFile(const std::string& path, const StoreChange& change, NewFileMode new_file_mode) {
  const fs::path target = BehindLinks(path);
  const Descriptor folder(FolderOf(target).string(), O_RDONLY | O_DIRECTORY);
  if (!folder || !LockFolder(folder))
    return false;

  std::string bytes;
  struct stat status {};
  const ReadResult read = ReadWhole(target.string(), bytes, status);
  if (read == ReadResult::Failed)
    return false;
  const std::optional<std::string> changed = change(bytes);
  if (!changed)
    return true;
  const bool stands = read == ReadResult::Ok;
  if (stands && ::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0)
    return false;
  if (!PutInPlace(target, *changed, stands ? &status : nullptr, new_file_mode))
    return false;
  ::fsync(folder.Get()); // the new bytes are in place; a folder that can't be synced is no reason to call them lost
  return true;
}

bool CopyFileWhole(const std::string& source, const std::string& target, bool fail_if_exists) {
  std::error_code error;
  if ((fail_if_exists && fs::exists(target, error)) || fs::is_directory(target, error) ||
      fs::equivalent(source, target, error))
    return false;
  const Descriptor from(source, O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (!from || ::fstat(from.Get(), &status) != 0 || !S_ISREG(status.st_mode))
    return false;
  Replacement copy(NameBeside(target), status.st_mode & kPermissionBits);
  if (!copy)
    return false;
  CopyInKernel(from.Get(), copy.Get(), status.st_size);
  if (!ReadBlocks(from.Get(), [&](std::string_view block) { return WriteAll(copy.Get(), block); }))
    return false;
  const struct timespec times[2] = {status.st_atim, status.st_mtim};
  return ::futimens(copy.Get(), times) == 0 && copy.TakeThePlaceOf(target);
}

bool LinkOrCopyFile(const std::string& source, const std::string& target) {
  std::error_code error;
  if (!fs::is_regular_file(source, error) || fs::is_directory(target, error))
    return false;
  if (fs::equivalent(source, target, error))
    return true;
  const std::string beside = NameBeside(target);
  ::unlink(beside.c_str());
  if (::linkat(AT_FDCWD, source.c_str(), AT_FDCWD, beside.c_str(), AT_SYMLINK_FOLLOW) != 0)
    return CopyFileWhole(source, target, false);
  if (std::rename(beside.c_str(), target.c_str()) == 0)
    return true;
  ::unlink(beside.c_str());
  return false;
}

std::error_code RenameUnlessTaken(const std::string& from, const std::string& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
    return {};
  if (errno != EINVAL && errno != ENOSYS)
    return {errno, std::generic_category()};
  // A file system that can't refuse by itself.
  std::error_code error;
  if (fs::exists(fs::symlink_status(to, error)))
    return std::make_error_code(std::errc::file_exists);
  fs::rename(from, to, error);
  return error;
}

std::optional<FileStamp> StampOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0)
    return std::nullopt;
  return FileStamp{status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

bool IsBeingWritten(const std::string& path) {
  const Descriptor file(path, O_RDONLY | O_NONBLOCK);
  return file.Get() >= 0 && ::flock(file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

bool MakePrivateFolder(const std::string& path) {
  std::error_code error;
  if (path.empty())
    return false;
  if (fs::is_directory(path, error))
    return true;
  const fs::path folder(path);
  const fs::path above = folder.parent_path();
  if (!above.empty() && above != folder && !MakePrivateFolder(above.string()))
    return false;
  return ::mkdir(path.c_str(), S_IRWXU) == 0 || fs::is_directory(path, error);
}

bool MayWriteInFolder(const std::string& path) {
  std::error_code error;
  return fs::is_directory(path, error) && ::faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

} // namespace kelmio

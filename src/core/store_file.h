// Files that must never be torn: read whole, and changed as one step or not at all.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

/// Every call of the system that the stores need beyond the standard library is made behind this header.
/// Any thread, and several running copies of the program; nothing throws on a failing file system.
namespace kelmio {

/// The whole file; nothing when it is missing or can't be read.
std::optional<std::string> ReadStoreFile(const std::string& path);

/// Given the bytes as they are now (none for a missing file), the bytes that are to be; nothing to leave the
/// file untouched.
using StoreChange = std::function<std::optional<std::string>(std::string_view bytes)>;

/// Who may read a file that is made new; a file that stands keeps its mode.
enum class NewFileMode { AsUmaskSays, OwnerOnly };

/// Reads the file, asks `change` and puts the new bytes in its place, all under a lock that other copies of the
/// program respect. Other files' and folders' absence is not mended: a missing folder is a failure. False when
/// the file could not be read or written, or the lock is held for seconds on end; the old bytes then stay whole.
bool ChangeStoreFile(const std::string& path, const StoreChange& change,
                     NewFileMode new_file_mode = NewFileMode::AsUmaskSays);

/// Copies a file of any size, its time of change included; the target appears whole or not at all. False also
/// when it exists and `fail_if_exists`, or when both are the same file.
bool CopyFileWhole(const std::string& source, const std::string& target, bool fail_if_exists);

/// For a file whose old name is about to go: gives it the new name as well, in place of what stands there, and
/// copies it only where the file system can't do that. Within one disk it needs no space. True also when the
/// target is the same file already.
bool LinkOrCopyFile(const std::string& source, const std::string& target);

/// Renames a file or folder within one disk; an error when there is anything of the new name, an empty folder too.
std::error_code RenameUnlessTaken(const std::string& from, const std::string& to);

/// What changes whenever a file is written; to be compared only.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t changed_seconds = 0;
  std::int64_t changed_nanoseconds = 0;
  bool operator==(const FileStamp&) const = default;
};
/// Nothing when there is no such file.
std::optional<FileStamp> StampOf(const std::string& path);

/// Whether some copy of the program, this one too, is writing the file: its writer holds a shared lock on it for
/// as long as it does. False for a file that can't be opened.
bool IsBeingWritten(const std::string& path);

/// Makes a folder and what is missing above it, for the user alone (mode 0700). False when it isn't there after.
bool MakePrivateFolder(const std::string& path);

/// Whether the user may make files in a folder.
bool MayWriteInFolder(const std::string& path);

} // namespace kelmio

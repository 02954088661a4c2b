#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace kelmio::test {

/// A folder of its own for one test, gone afterwards.
class TemporaryFolder {
public:
  explicit TemporaryFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
    std::string pattern = parent / "kelmio-test-XXXXXX";
    path_ = ::mkdtemp(pattern.data());
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  /// With its closing separator.
  std::string Path() const { return path_ + "/"; }

private:
  std::string path_;
};

} // namespace kelmio::test

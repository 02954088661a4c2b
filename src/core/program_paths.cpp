#include "core/program_paths.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "core/store_file.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 3> kSystemFolders = {"/usr", "/opt", "/bin"};

bool IsSystemFolder(const fs::path& folder) {
  return std::any_of(kSystemFolders.begin(), kSystemFolders.end(), [&](std::string_view name) {
    const fs::path system(name);
    return std::mismatch(system.begin(), system.end(), folder.begin(), folder.end()).first == system.end();
  });
}

// A folder of the desktop's base directories: a variable that isn't an absolute path is to be ignored.
fs::path BaseFolder(const Surroundings& surroundings, const char* variable, const char* below_home,
                    const fs::path& without_home) {
  fs::path named = surroundings.variable(variable).value_or("");
  if (named.is_absolute())
    return named;
  const fs::path home = surroundings.variable("HOME").value_or("");
  return home.is_absolute() ? home / below_home : without_home;
}

fs::path FolderOf(const std::string& executable) {
  return fs::path(executable).lexically_normal().parent_path();
}

} // namespace

Surroundings ProcessSurroundings() {
  return {[](const std::string& name) -> std::optional<std::string> {
            const char* value = std::getenv(name.c_str());
            if (value == nullptr)
              return std::nullopt;
            return value;
          },
          MayWriteInFolder};
}

std::string ChooseAppPath(const Surroundings& surroundings, const std::string& executable) {
  if (const std::string home = surroundings.variable("KELMIO_HOME").value_or(""); !home.empty()) {
    std::error_code error;
    const fs::path absolute = fs::absolute(home, error);
    return WithClosingSeparator(error ? home : absolute.string());
  }
  const fs::path own = FolderOf(executable);
  if (!own.empty() && !IsSystemFolder(own) && surroundings.may_write_in(own.string()))
    return WithClosingSeparator(own.string());
  return WithClosingSeparator((BaseFolder(surroundings, "XDG_DATA_HOME", ".local/share", own) / "kelmio").string());
}

std::string ChooseRegistryPath(const Surroundings& surroundings, const std::string& executable) {
  if (std::string named = surroundings.variable("KELMIO_REGISTRY").value_or(""); !named.empty())
    return named;
  return (BaseFolder(surroundings, "XDG_CONFIG_HOME", ".config", FolderOf(executable)) / "kelmio" / "registry.reg")
      .string();
}

std::string WithClosingSeparator(std::string path) {
  if (!path.empty() && path.back() != '/')
    path += '/';
  return path;
}

} // namespace kelmio

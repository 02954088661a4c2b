// Where the program keeps its data and its settings.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace kelmio {

/// What the choice of the folders depends on, so that it can be made without touching the machine.
struct Surroundings {
  /// A variable of the environment; nothing when it isn't set.
  std::function<std::optional<std::string>(const std::string& name)> variable;
  /// Whether the user may make files in a folder.
  std::function<bool(const std::string& folder)> may_write_in;
};

/// The running process's own.
Surroundings ProcessSurroundings();

/// The program's folder with a closing separator: `KELMIO_HOME`; else the executable's folder when the user may
/// write there and it is none of the system's; else "kelmio" in the user's data folder, which may be missing.
std::string ChooseAppPath(const Surroundings& surroundings, const std::string& executable);

/// The hive's file: `KELMIO_REGISTRY`; else "kelmio/registry.reg" in the user's configuration folder.
std::string ChooseRegistryPath(const Surroundings& surroundings, const std::string& executable);

/// `path` with a separator at its end, added only if missing. Empty stays empty.
std::string WithClosingSeparator(std::string path);

} // namespace kelmio

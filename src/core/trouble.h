// Where a store says that it could not keep something.
#pragma once

#include <functional>
#include <string>

namespace kelmio {

/// Takes one sentence for the user to read; it is called on the user interface thread and must not throw.
/// A store works without one: it is never empty, by default it says nothing.
using TroubleSink = std::function<void(const std::string& sentence)>;

inline TroubleSink NoTroubleSink() {
  return [](const std::string&) {};
}

/// The sentence for a file that could not be written.
inline std::string NotWritten(const std::string& file) {
  return "Could not write \"" + file + "\".";
}

} // namespace kelmio

// Starting with the session, by a desktop entry.
#pragma once

#include <string>
#include <vector>

#include "platform/desktop.h"

namespace kelmio {

/// Keeps `kelmio.desktop` in a folder, as the Desktop Application Autostart Specification has it. The entry is
/// replaced whole or not at all. An executable that such an entry can't name leaves no entry.
class XdgAutoStart : public AutoStart {
public:
  /// The folder is made when the entry is. Each of `environment`, a text "NAME=value", is set for the program that
  /// the entry starts: a start with the session finds the data that this run has.
  explicit XdgAutoStart(std::string folder, std::vector<std::string> environment = {});
  /// `$XDG_CONFIG_HOME/autostart`, by default below `~/.config`.
  static std::string DefaultFolder();

  void Enable(const std::string& executable) override;
  void Disable() override;

private:
  std::string folder_;
  std::vector<std::string> environment_;
};

} // namespace kelmio

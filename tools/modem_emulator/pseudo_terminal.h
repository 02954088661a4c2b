#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace kelmio::emulated {

// The emulator's end of a pseudo terminal whose other end is found through a link. Not thread-safe.
class PseudoTerminal {
public:
  // An empty `link` means that the device's own name is used.
  explicit PseudoTerminal(std::filesystem::path link) : link_(std::move(link)) {}
  ~PseudoTerminal() { Unplug(); }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // False, with `errno` set, when there is no pseudo terminal to be had or the link can't be made.
  bool Plug();
  // Closes the emulator's end, which is a hang-up for who has the other one open, and takes the link away.
  void Unplug();

  int Master() const { return master_; } // -1 while unplugged
  std::filesystem::path Port() const { return link_.empty() ? device_ : link_; }
  std::filesystem::path Device() const { return device_; }
  // Whether anybody has the device open.
  bool IsOpen() const;
  // Bits per second that the host has set; 0 while unplugged.
  int Speed() const;
  // Refuses further opens: by rights, or as busy, which does not hold for root.
  bool RefuseRights();
  bool RefuseAsBusy();

private:
  std::filesystem::path link_;
  std::filesystem::path device_;
  int master_ = -1;
};

} // namespace kelmio::emulated

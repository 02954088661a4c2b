// What the links of the message windows lead to.
#pragma once

#include <string>

namespace kelmio {

/// The shell implements it. User interface thread only.
class MessageLinks {
public:
  virtual ~MessageLinks() = default;
  /// Hands an address of the web or a mail address behind "mailto:" to the desktop.
  virtual void OpenAddress(const std::string& address) = 0;
  /// Opens the dialer with this number.
  virtual void Dial(const std::string& number) = 0;
};

} // namespace kelmio

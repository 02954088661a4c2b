// The address books, read by a process of their own.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "platform/address_book.h"
#include "platform/event_loop.h"

namespace kelmio {

/// What is granted to the process that reads.
struct ReaderLimits {
  /// For the question whether the desktop's service is there; nothing else runs meanwhile.
  std::chrono::milliseconds probe{1000};
  /// How long it may be silent.
  std::chrono::milliseconds silence{8000};
  /// How long it may take altogether.
  std::chrono::milliseconds whole{120000};
  /// How many contacts and how many bytes of them are taken. Contacts beyond are left out; too many bytes in too few
  /// contacts are no address book.
  std::size_t contacts = 100000;
  std::size_t bytes = 64U << 20U;
};

/// The libraries that read foreign data stay out of this process, for its size, and because a damaged file or a service
/// that hangs is then at worst an address book that can't be read. User interface thread only; pending events run
/// while an address book is read, and may begin another reading.
class SeparateAddressBooks : public AddressBooks {
public:
  /// `reader` is the path of the program that reads; without it there are no address books. `loop` outlives this.
  SeparateAddressBooks(EventLoop& loop, std::string reader, ReaderLimits limits = {});

  bool DesktopAnswers() override;
  std::unique_ptr<AddressBook> OpenDesktop() override;
  std::unique_ptr<AddressBook> OpenFile(const std::string& path) override;

private:
  std::unique_ptr<AddressBook> Open(const std::vector<std::string>& arguments);

  EventLoop& loop_;
  std::string reader_;
  ReaderLimits limits_;
};

} // namespace kelmio

// The address books of the desktop's service, Evolution Data Server.
#pragma once

#include <chrono>
#include <functional>

#include "address_books/readers/item_text.h"

/// The thread that calls is the one whose default main context the libraries use.
namespace kelmio {

/// Whether the service runs on the session bus, or the bus can start it. Nothing is started.
bool DesktopServiceAnswers(std::chrono::milliseconds patience);

/// Hands over the contacts of all address books that are switched on. One that doesn't answer within some seconds is
/// left out. `alive` is called between the address books. False when the service isn't there. The library can't be
/// called back from a service that hangs as a whole, so this may not return: the other end of the pipe has a limit.
bool ReadDesktopAddressBooks(const ItemSink& take, const std::function<void()>& alive);

} // namespace kelmio

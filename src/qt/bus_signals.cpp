#include "qt/bus_signals.h"

#include "qt/handler_guard.h"

namespace kelmio {

void BusSignals::Take(const QDBusMessage& signal) {
  RunHandler([&] { on_signal_(signal); });
}

} // namespace kelmio

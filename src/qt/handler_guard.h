// Keeps exceptions out of the toolkit.
#pragma once

#include <QtGlobal>

#include <exception>

namespace kelmio {

/// Runs a handler of the logic. An exception ends that handler only: the toolkit can't be unwound through.
template <class Handler> void RunHandler(Handler&& handler) noexcept {
  try {
    handler();
  } catch (const std::exception& error) {
    qWarning("A handler failed: %s", error.what());
  } catch (...) {
    qWarning("A handler failed");
  }
}

} // namespace kelmio

// The connection to the X server, where one is behind the windows.
#pragma once

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace kelmio {

struct FreeReply {
  void operator()(void* reply) const noexcept { std::free(reply); } // NOLINT: it comes from malloc
};
/// An answer of the X server.
template <class Reply> using ReplyPtr = std::unique_ptr<Reply, FreeReply>;

/// The toolkit's own connection; nothing on other window systems. User interface thread only.
inline xcb_connection_t* X11Connection() {
  // The platform without a screen has the interface too, and no connection behind it.
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 != nullptr && QGuiApplication::platformName() == QStringLiteral("xcb") ? x11->connection() : nullptr;
}

/// The first screen of the connection, which is the one that the toolkit's windows stand on.
inline xcb_screen_t* X11Screen(xcb_connection_t* connection) {
  return xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}

} // namespace kelmio

#include "qt/x11_selection.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace kelmio {

namespace {

struct FreeMemory {
  void operator()(void* memory) const noexcept { std::free(memory); } // NOLINT: it comes from malloc
};

int ScreenNumber() {
  char* host = nullptr;
  int display = 0;
  int screen = 0;
  const int parsed = xcb_parse_display(nullptr, &host, &display, &screen);
  const std::unique_ptr<char, FreeMemory> held(host);
  return parsed != 0 ? screen : 0;
}

} // namespace

std::uint32_t ScreenSelectionOwner(const QByteArray& name) {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  xcb_connection_t* connection = x11 != nullptr ? x11->connection() : nullptr;
  if (connection == nullptr)
    return 0;
  const QByteArray whole = name + QByteArray::number(ScreenNumber());
  const auto asked = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(whole.size()), whole.constData());
  const std::unique_ptr<xcb_intern_atom_reply_t, FreeMemory> atom(xcb_intern_atom_reply(connection, asked, nullptr));
  if (atom == nullptr)
    return 0;
  const std::unique_ptr<xcb_get_selection_owner_reply_t, FreeMemory> owner(
      xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
  return owner != nullptr ? owner->owner : 0;
}

} // namespace kelmio

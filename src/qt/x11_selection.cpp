#include "qt/x11_selection.h"

#include "qt/x11_connection.h"

namespace kelmio {

namespace {

int ScreenNumber() {
  char* host = nullptr;
  int display = 0;
  int screen = 0;
  const int parsed = xcb_parse_display(nullptr, &host, &display, &screen);
  const ReplyPtr<char> held(host);
  return parsed != 0 ? screen : 0;
}

} // namespace

std::uint32_t ScreenSelectionOwner(const QByteArray& name) {
  xcb_connection_t* connection = X11Connection();
  if (connection == nullptr)
    return 0;
  const QByteArray whole = name + QByteArray::number(ScreenNumber());
  const auto asked = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(whole.size()), whole.constData());
  const ReplyPtr<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection, asked, nullptr));
  if (atom == nullptr)
    return 0;
  const ReplyPtr<xcb_get_selection_owner_reply_t> owner(
      xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
  return owner != nullptr ? owner->owner : 0;
}

} // namespace kelmio

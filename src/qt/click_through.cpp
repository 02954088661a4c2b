#include "qt/click_through.h"

#include <xcb/shape.h>

#include "qt/x11_connection.h"

namespace kelmio {

bool LetClicksThrough(const QWidget& window) {
  xcb_connection_t* connection = X11Connection();
  if (connection == nullptr || !xcb_get_extension_data(connection, &xcb_shape_id)->present)
    return false;
  // From the window up through its frames, as far as below the root.
  auto part = static_cast<xcb_window_t>(window.winId());
  constexpr xcb_window_t kNone = XCB_WINDOW_NONE;
  while (part != kNone) {
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, part, 0, 0, 0,
                         nullptr);
    const ReplyPtr<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, part), nullptr));
    part = tree != nullptr && tree->parent != tree->root ? tree->parent : kNone;
  }
  xcb_flush(connection);
  return true;
}

} // namespace kelmio

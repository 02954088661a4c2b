#include "qt/caption_flight.h"

#include <xcb/shape.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string_view>
#include <thread>

#include "qt/x11_connection.h"

namespace kelmio {

namespace {

constexpr int kFrames = 11;
constexpr std::chrono::milliseconds kFrameTime{14};
constexpr int kCaption = 24;                   // height, in pixels
constexpr int kBorder = 3;                     // width, in pixels
constexpr std::uint8_t kTrueColors = 24;       // bits of a pixel that is its red, green and blue
constexpr std::uint32_t kOpacity = 0xB0000000; // of 0xFFFFFFFF, where a compositor reads it

QRect Scaled(const QRect& rect) {
  const double ratio = qGuiApp->devicePixelRatio();
  const auto scale = [ratio](int pixels) { return qRound(pixels * ratio); };
  return {scale(rect.x()), scale(rect.y()), scale(rect.width()), scale(rect.height())};
}

/// Where the frame is, with `way` from 0 to 1: slow at both ends.
QRect Between(const QRect& from, const QRect& to, double way) {
  const double part = way * way * (3 - 2 * way);
  const auto mixed = [part](int one, int other) { return qRound(one + (other - one) * part); };
  return {QPoint(mixed(from.left(), to.left()), mixed(from.top(), to.top())),
          QPoint(mixed(from.right(), to.right()), mixed(from.bottom(), to.bottom()))};
}

xcb_rectangle_t Rectangle(int x, int y, int width, int height) {
  return {static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
          static_cast<std::uint16_t>(height)};
}

/// Caption, both sides and bottom.
std::array<xcb_rectangle_t, 4> Outline(const QRect& frame) {
  const int caption = std::min(kCaption, frame.height());
  const int side = std::min(kBorder, frame.width());
  const int bottom = std::min(kBorder, frame.height());
  return {Rectangle(frame.x(), frame.y(), frame.width(), caption),
          Rectangle(frame.x(), frame.y(), side, frame.height()),
          Rectangle(frame.right() + 1 - side, frame.y(), side, frame.height()),
          Rectangle(frame.x(), frame.bottom() + 1 - bottom, frame.width(), bottom)};
}

/// A window of one colour that the window manager leaves alone and no click stops at; only its shape changes.
class Overlay {
public:
  Overlay(xcb_connection_t* connection, const QRect& room, QRgb color)
      : connection_(connection), window_(xcb_generate_id(connection)), origin_(room.topLeft()) {
    const xcb_screen_t& screen = *X11Screen(connection);
    const std::array<std::uint32_t, 2> values = {color & RGB_MASK, 1}; // in the order of the mask's bits
    const xcb_rectangle_t place = Rectangle(room.x(), room.y(), room.width(), room.height());
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window_, screen.root, place.x, place.y, place.width,
                      place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values.data());
    constexpr std::string_view kName = "_NET_WM_WINDOW_OPACITY";
    const ReplyPtr<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(kName.size()), kName.data()), nullptr));
    if (atom != nullptr)
      xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window_, atom->atom, XCB_ATOM_CARDINAL, 32, 1, &kOpacity);
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, window_, 0, 0, 0,
                         nullptr);
  }
  Overlay(const Overlay&) = delete;
  Overlay& operator=(const Overlay&) = delete;
  ~Overlay() {
    xcb_destroy_window(connection_, window_);
    xcb_flush(connection_);
  }

  void Draw(const QRect& frame) {
    const auto outline = Outline(frame.translated(-origin_));
    xcb_shape_rectangles(connection_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, window_, 0,
                         0, static_cast<std::uint32_t>(outline.size()), outline.data());
    if (!mapped_)
      xcb_map_window(connection_, window_);
    mapped_ = true;
    xcb_flush(connection_);
  }

private:
  xcb_connection_t* connection_;
  xcb_window_t window_;
  QPoint origin_;
  bool mapped_ = false;
};

} // namespace

bool DrawCaptionFlight(const QRect& from, const QRect& to, QRgb color) {
  xcb_connection_t* connection = X11Connection();
  if (connection == nullptr || X11Screen(connection)->root_depth < kTrueColors ||
      !xcb_get_extension_data(connection, &xcb_shape_id)->present)
    return false;
  const QRect start = Scaled(from);
  const QRect end = Scaled(to);
  Overlay overlay(connection, start.united(end), color);
  for (int frame = 0; frame <= kFrames; ++frame) {
    overlay.Draw(Between(start, end, static_cast<double>(frame) / kFrames));
    std::this_thread::sleep_for(kFrameTime);
  }
  return true;
}

} // namespace kelmio

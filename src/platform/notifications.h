// Notifications of the desktop: a few words beside the user's work, with buttons.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace kelmio {

/// What `Notifications::on_action` gives when the notification itself is clicked and none of its buttons.
inline constexpr const char* kNotificationClicked = "default";

struct Notification {
  /// An incoming call stands until it is replaced or closed; how long the others stand is the desktop's affair.
  enum class Kind { IncomingCall, MissedCall, NewMessage };
  struct Button {
    std::string action; // given to `on_action`
    std::string caption;
  };

  Kind kind = Kind::IncomingCall;
  std::string title;
  std::string text;    // plain, whatever it holds; lines end with '\n'
  std::string picture; // path of a picture file; the program's own picture when empty or unreadable
  std::vector<Button> buttons;

  friend bool operator==(const Notification&, const Notification&) = default;
};
inline bool operator==(const Notification::Button& left, const Notification::Button& right) {
  return left.action == right.action && left.caption == right.caption;
}

/// User interface thread only. Nothing waits for the desktop: where it shows no notifications, or is slow to, nothing
/// else is affected. Buttons are left out where the desktop has none.
class Notifications {
public:
  virtual ~Notifications() = default;
  /// Shows it under a key of the caller's, in place of the one that stands under that key.
  virtual void Show(int key, const Notification& notification) = 0;
  /// Takes it away, or doesn't show it if that is still to come. An unknown key is ignored.
  virtual void Close(int key) = 0;

  /// A button was pressed, or the notification clicked; most desktops close it then.
  std::function<void(int key, const std::string& action)> on_action = [](int, const std::string&) {};
  /// It is gone from the desktop, by the user or by the desktop's own rules. Not told of `Close`.
  std::function<void(int key)> on_closed = [](int) {};
};

} // namespace kelmio

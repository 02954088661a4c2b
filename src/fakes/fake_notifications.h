// The desktop's notifications in memory.
#pragma once

#include <map>

#include "platform/notifications.h"

namespace kelmio {

class FakeNotifications : public Notifications {
public:
  void Show(int key, const Notification& notification) override { standing[key] = notification; }
  void Close(int key) override { standing.erase(key); }
  /// As a user or the desktop does it.
  void PutAway(int key) {
    standing.erase(key);
    on_closed(key);
  }
  std::map<int, Notification> standing; // by key
};

} // namespace kelmio

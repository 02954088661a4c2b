// Keys that reach the program from anywhere on a Wayland desktop.
#pragma once

#include <map>
#include <memory>

#include "platform/hot_keys.h"
#include "qt/bus_signals.h"

namespace kelmio {

/// Asks the desktop's portal for global shortcuts (org.freedesktop.portal.GlobalShortcuts, version 1). The bus is first
/// touched when a key is registered. The user may be asked by the desktop and may choose another key or none; a desktop
/// without the portal gives none, and nothing waits for one that doesn't answer.
///
/// Each key has a session of its own, since a session can't be given more keys later and all of its keys go with it.
class PortalHotKeys : public HotKeys {
public:
  PortalHotKeys();
  PortalHotKeys(const PortalHotKeys&) = delete;
  PortalHotKeys& operator=(const PortalHotKeys&) = delete;
  ~PortalHotKeys() override;

  bool RegisterHotKey(int id, int modifiers, int key_code) override;
  bool UnregisterHotKey(int id) override;

private:
  class Session;

  bool Connect();
  void Activated(const QDBusMessage& signal);

  std::unique_ptr<QDBusConnection> bus_; // nothing until it is needed
  std::unique_ptr<BusSignals> signals_;
  std::map<int, std::unique_ptr<Session>> sessions_;
};

} // namespace kelmio

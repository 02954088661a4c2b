// Notifications by the desktop's notification service on the session bus.
#pragma once

#include <QDBusServiceWatcher>
#include <QStringList>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include "platform/notifications.h"
#include "qt/bus_signals.h"

namespace kelmio {

/// The interface is the Desktop Notifications Specification 1.2 of freedesktop.org. The bus is first touched by the
/// first `Show`. A service that hangs may take as long as it likes: what it was asked to show meanwhile is reduced to
/// the last word on each key, and brought up to date when it is back.
class DBusNotifications : public Notifications {
public:
  DBusNotifications() = default;
  DBusNotifications(const DBusNotifications&) = delete;
  DBusNotifications& operator=(const DBusNotifications&) = delete;
  ~DBusNotifications() override;

  void Show(int key, const Notification& notification) override;
  void Close(int key) override;

private:
  struct Entry {
    std::uint32_t id = 0;               // the service's number; 0 while it has none
    bool under_way = false;             // a call that brings the number hasn't been answered
    bool close = false;                 // to be taken away as soon as it has a number
    std::optional<Notification> next{}; // to be shown as soon as the service is free
  };

  bool Connect();
  void AskCapabilities();
  void Advance(int key);
  void AdvanceAll();
  void Send(int key, const Notification& notification);
  void TakeAway(std::uint32_t id) const;
  /// The service has ended or another one has come: its numbers mean nothing any more.
  void ServiceChanged();
  void Receive(const QDBusMessage& signal);
  bool Can(const char* capability) const { return capabilities_->contains(QLatin1String(capability)); }

  std::unique_ptr<QDBusConnection> bus_; // nothing until it is needed
  std::unique_ptr<BusSignals> signals_;
  std::unique_ptr<QDBusServiceWatcher> watcher_;
  std::optional<QStringList> capabilities_; // of the service; nothing while not known
  bool asking_ = false;
  std::map<int, Entry> entries_; // by the caller's key
};

} // namespace kelmio

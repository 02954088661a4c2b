// What the speakers with services of the desktop's message bus share.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <limits>

namespace kelmio {

/// The toolkit's value, in milliseconds, for a reply that may take forever.
inline constexpr int kNoTimeLimit = std::numeric_limits<int>::max();

/// Hands each signal that it was subscribed to on, for classes that are no objects of the toolkit. Lives on the user
/// interface thread and hears nothing once it is gone.
class BusSignals : public QObject {
  Q_OBJECT

public:
  explicit BusSignals(std::function<void(const QDBusMessage&)> on_signal) : on_signal_(std::move(on_signal)) {}

  /// False when the bus doesn't take the subscription. An empty `path` means any object.
  bool Subscribe(QDBusConnection bus, const QString& service, const QString& path, const QString& interface,
                 const QString& name) {
    return bus.connect(service, path, interface, name, this, SLOT(Take(QDBusMessage)));
  }

private Q_SLOTS:
  void Take(const QDBusMessage& signal);

private:
  std::function<void(const QDBusMessage&)> on_signal_;
};

} // namespace kelmio

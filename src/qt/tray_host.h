// Which tray the desktop has, if any.
#pragma once

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <functional>

namespace kelmio {

/// Looks for the tray of the session, and tells when it comes, goes or is another one. There are two kinds: hosts of
/// status notifiers, on the session's bus, and windows of X11 that take icons into them. The toolkit settles for a kind
/// at its first icon and never asks again, so a tray of the other kind is none from then on. User interface thread
/// only.
class TrayHost {
public:
  /// `changed` runs from the event loop.
  explicit TrayHost(std::function<void()> changed);
  TrayHost(const TrayHost&) = delete;
  TrayHost& operator=(const TrayHost&) = delete;

  /// Looks at once, and from now on. Waits a moment for a bus that is slow. A second call does nothing.
  void Start();

  /// Another text for each tray, empty while there is none.
  const QString& Identity() const { return identity_; }
  bool EmbedsIcons() const { return kind_ == Kind::Embeds; }
  /// The tray's window, for the kind that has one.
  std::uint32_t Window() const;

private:
  enum class Kind { Unknown, Notifier, Embeds };

  void Look();
  void Ask(bool wait);
  void Answered(const QDBusMessage& answer);
  void LookForWindow();
  void Settle(Kind kind, const QString& identity);

  std::function<void()> changed_;
  QTimer watch_;
  QDBusServiceWatcher notifiers_;
  bool started_ = false;
  bool asked_ = false; // and not answered yet
  Kind kind_ = Kind::Unknown;
  QString identity_;
};

} // namespace kelmio

#include "qt/tray_host.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QGuiApplication>

#include <utility>

#include "qt/x11_selection.h"

namespace kelmio {

namespace {

/// How often the tray is looked for. Not all that happens to it is told.
constexpr int kWatchMs = 3000;
/// How long the bus may take, at the start with the program waiting.
constexpr int kAnswerMs = 500;

const QString kNotifierService = QStringLiteral("org.kde.StatusNotifierWatcher");

bool OnADesktop() {
  const QString platform = QGuiApplication::platformName();
  return platform == QLatin1String("xcb") || platform.startsWith(QLatin1String("wayland"));
}

QDBusMessage Question() {
  QDBusMessage question =
      QDBusMessage::createMethodCall(kNotifierService, QStringLiteral("/StatusNotifierWatcher"),
                                     QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
  question << kNotifierService << QStringLiteral("IsStatusNotifierHostRegistered");
  question.setAutoStartService(false);
  return question;
}

bool HasHost(const QDBusMessage& answer) {
  return answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty() &&
         answer.arguments().constFirst().value<QDBusVariant>().variant().toBool();
}

} // namespace

TrayHost::TrayHost(std::function<void()> changed) : changed_(std::move(changed)) {
  watch_.setInterval(kWatchMs);
  watch_.setTimerType(Qt::VeryCoarseTimer);
  QObject::connect(&watch_, &QTimer::timeout, &watch_, [this] { Look(); });
}

void TrayHost::Start() {
  if (std::exchange(started_, true) || !OnADesktop())
    return;
  notifiers_.setConnection(QDBusConnection::sessionBus());
  notifiers_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  notifiers_.addWatchedService(kNotifierService);
  QObject::connect(&notifiers_, &QDBusServiceWatcher::serviceOwnerChanged, &watch_, [this] { Look(); });
  Ask(true);
  watch_.start();
}

std::uint32_t TrayHost::Window() const {
  return EmbedsIcons() ? identity_.toUInt() : 0;
}

void TrayHost::Look() {
  const QString before = identity_;
  if (kind_ != Kind::Embeds)
    Ask(false);
  else
    LookForWindow();
  if (identity_ != before)
    changed_();
}

void TrayHost::Ask(bool wait) {
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) {
    Answered(QDBusMessage());
    return;
  }
  if (wait) {
    Answered(bus.call(Question(), QDBus::Block, kAnswerMs));
    return;
  }
  if (std::exchange(asked_, true))
    return;
  auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(Question(), kAnswerMs), &watch_);
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, &watch_, [this](QDBusPendingCallWatcher* finished) {
    asked_ = false;
    finished->deleteLater();
    const QString before = identity_;
    Answered(finished->reply());
    if (identity_ != before)
      changed_();
  });
}

void TrayHost::Answered(const QDBusMessage& answer) {
  if (HasHost(answer))
    Settle(Kind::Notifier, answer.service());
  else if (kind_ == Kind::Notifier)
    identity_.clear();
  else
    LookForWindow();
}

void TrayHost::LookForWindow() {
  const std::uint32_t window = ScreenSelectionOwner("_NET_SYSTEM_TRAY_S");
  if (window == 0)
    identity_.clear();
  else
    Settle(Kind::Embeds, QString::number(window));
}

void TrayHost::Settle(Kind kind, const QString& identity) {
  kind_ = kind;
  identity_ = identity;
}

} // namespace kelmio

#include "qt/portal_hot_keys.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QGuiApplication>
#include <QRandomGenerator>

#include <utility>

#include "qt/key_codes.h"

namespace kelmio {

/// A shortcut as the portal wants it: its name and what is told of it.
struct PortalShortcut {
  QString name;
  QVariantMap details;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut) {
  argument.beginStructure();
  argument << shortcut.name << shortcut.details;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut) {
  argument.beginStructure();
  argument >> shortcut.name >> shortcut.details;
  argument.endStructure();
  return argument;
}

} // namespace kelmio

Q_DECLARE_METATYPE(kelmio::PortalShortcut)

namespace kelmio {

namespace {

constexpr const char* kService = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kShortcuts = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* kRequest = "org.freedesktop.portal.Request";
constexpr const char* kSession = "org.freedesktop.portal.Session";
constexpr const char* kRegistry = "org.freedesktop.host.portal.Registry";
/// A connection of our own: who calls must make himself known before anything else is asked of the portal, and the
/// toolkit asks it for much on the connection that all share.
constexpr const char* kConnection = "kelmio-hot-keys";

constexpr const char* kShortcutName = "show-window";
constexpr const char* kDescription = "Show Kelmio";

QDBusMessage CallOf(const char* path, const char* interface, const char* method, const QVariantList& arguments) {
  QDBusMessage message = QDBusMessage::createMethodCall(kService, path, interface, method);
  message.setArguments(arguments);
  return message;
}

/// Nobody is to guess it, or the answer could be forged.
QString NewToken() {
  return "kelmio_" + QString::number(QRandomGenerator::system()->generate64(), 16);
}

} // namespace

/// One key, from the request to its release.
class PortalHotKeys::Session {
public:
  Session(QDBusConnection bus, QString trigger)
      : bus_(std::move(bus)), trigger_(std::move(trigger)),
        answers_([this](const QDBusMessage& signal) { Answer(signal); }) {
    Ask("CreateSession", {}, {{"session_handle_token", NewToken()}});
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() {
    if (!request_.isEmpty())
      bus_.asyncCall(CallOf(qUtf8Printable(request_), kRequest, "Close", {}));
    if (!handle_.isEmpty())
      bus_.asyncCall(CallOf(qUtf8Printable(handle_), kSession, "Close", {}));
  }

  /// The object's path; empty until the portal has made it.
  const QString& Handle() const { return handle_; }

private:
  /// The answer comes as a signal of an object whose path follows from the token, so that it can't be missed.
  void Ask(const char* method, QVariantList arguments, QVariantMap options) {
    const QString token = NewToken();
    QString sender = bus_.baseService().mid(1);
    sender.replace('.', '_');
    request_ = QString("%1/request/%2/%3").arg(kPath, sender, token);
    answers_.Subscribe(bus_, kService, request_, kRequest, "Response");
    options.insert("handle_token", token);
    arguments.append(options);
    auto* reply = new QDBusPendingCallWatcher(
        bus_.asyncCall(CallOf(kPath, kShortcuts, method, arguments), kNoTimeLimit), &answers_);
    QObject::connect(reply, &QDBusPendingCallWatcher::finished, &answers_, [this, reply] {
      reply->deleteLater();
      if (reply->isError())
        request_.clear(); // no portal, or none for us
    });
  }

  void Answer(const QDBusMessage& signal) {
    if (signal.path() != request_)
      return;
    request_.clear();
    constexpr uint kDone = 0;
    if (signal.arguments().value(0).toUInt() != kDone || !handle_.isEmpty())
      return;
    const auto results = qdbus_cast<QVariantMap>(signal.arguments().value(1));
    // The portal gives a text where its own description has said so from the start, and others give a path.
    const QVariant handle = results.value("session_handle");
    handle_ = handle.canConvert<QDBusObjectPath>() ? handle.value<QDBusObjectPath>().path() : handle.toString();
    if (handle_.isEmpty())
      return;
    const QList<PortalShortcut> shortcuts{
        {kShortcutName, {{"description", kDescription}, {"preferred_trigger", trigger_}}}};
    const QString no_window;
    Ask("BindShortcuts", {QVariant::fromValue(QDBusObjectPath(handle_)), QVariant::fromValue(shortcuts), no_window},
        {});
  }

  QDBusConnection bus_;
  QString trigger_;
  BusSignals answers_;
  QString request_; // the object of the question that is open
  QString handle_;
};

PortalHotKeys::PortalHotKeys() = default;

PortalHotKeys::~PortalHotKeys() {
  sessions_.clear();
  signals_.reset();
  if (bus_ != nullptr)
    QDBusConnection::disconnectFromBus(kConnection);
}

bool PortalHotKeys::RegisterHotKey(int id, int modifiers, int key_code) {
  const std::string trigger = PortalTrigger(modifiers, key_code);
  if (trigger.empty() || sessions_.contains(id) || !Connect())
    return false;
  sessions_.emplace(id, std::make_unique<Session>(*bus_, QString::fromStdString(trigger)));
  return true;
}

bool PortalHotKeys::UnregisterHotKey(int id) {
  return sessions_.erase(id) != 0;
}

bool PortalHotKeys::Connect() {
  if (bus_ == nullptr) {
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    bus_ = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(QDBusConnection::SessionBus, kConnection));
    if (!bus_->isConnected())
      return false;
    signals_ = std::make_unique<BusSignals>([this](const QDBusMessage& signal) { Activated(signal); });
    signals_->Subscribe(*bus_, kService, kPath, kShortcuts, "Activated");
    // Since portal 1.20 a program outside a sandbox says who it is; older ones answer with an error, which is as well.
    bus_->asyncCall(CallOf(kPath, kRegistry, "Register", {QGuiApplication::desktopFileName(), QVariantMap()}),
                    kNoTimeLimit);
  }
  return bus_->isConnected();
}

void PortalHotKeys::Activated(const QDBusMessage& signal) {
  const QString handle = signal.arguments().value(0).value<QDBusObjectPath>().path();
  for (const auto& [id, session] : sessions_)
    if (!handle.isEmpty() && session->Handle() == handle) {
      on_hot_key(id);
      return;
    }
}

} // namespace kelmio

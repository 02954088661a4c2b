#include "qt/dbus_notifications.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QImage>
#include <QPixmap>

#include <algorithm>
#include <iterator>
#include <utility>

#include "qt/command_icons.h"
#include "qt/picture_file.h"
#include "qt/units.h"

namespace kelmio {

/// A picture as the `image-data` hint wants it.
struct NotificationPicture {
  QImage image; // Format_RGB888
};

QDBusArgument& operator<<(QDBusArgument& argument, const NotificationPicture& picture) {
  constexpr int kBitsPerSample = 8;
  constexpr int kChannels = 3;
  const QImage& image = picture.image;
  argument.beginStructure();
  argument << image.width() << image.height() << static_cast<int>(image.bytesPerLine()) << false << kBitsPerSample
           << kChannels
           << QByteArray(reinterpret_cast<const char*>(image.constBits()), static_cast<qsizetype>(image.sizeInBytes()));
  argument.endStructure();
  return argument;
}

/// Nobody sends us one; the toolkit registers both directions or none.
const QDBusArgument& operator>>(const QDBusArgument& argument, NotificationPicture& /*picture*/) {
  return argument;
}

} // namespace kelmio

Q_DECLARE_METATYPE(kelmio::NotificationPicture)

namespace kelmio {

namespace {

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";

// Bytes of the `urgency` hint, and values of the time to stand, in milliseconds.
constexpr uchar kNormal = 1;
constexpr uchar kCritical = 2;
constexpr int kServiceDecides = -1;
constexpr int kStands = 0;

constexpr std::size_t kMostEntries = 16;
constexpr int kLongestLine = 200; // characters
constexpr int kPictureSide = 96;  // pixels

QDBusMessage CallOf(const char* method) {
  return QDBusMessage::createMethodCall(kService, kPath, kService, QLatin1String(method));
}

/// Lines of a bearable length with nothing in them but text.
QString CleanText(const std::string& text) {
  QStringList lines = ToText(text).split('\n');
  for (QString& line : lines) {
    for (QChar& character : line)
      if (character.category() == QChar::Other_Control)
        character = ' ';
    line.truncate(kLongestLine);
  }
  return lines.join('\n');
}

NotificationPicture PictureOf(const std::string& path) {
  QImage image = path.empty() ? QImage() : ReadPicture(path);
  if (image.isNull())
    image = ProgramIcon().pixmap(kPictureSide, kPictureSide).toImage();
  else
    image = image.scaled(kPictureSide, kPictureSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  return {image.convertToFormat(QImage::Format_RGB888)};
}

QString CategoryOf(Notification::Kind kind) {
  switch (kind) {
  case Notification::Kind::IncomingCall:
    return QStringLiteral("call.incoming");
  case Notification::Kind::MissedCall:
    return QStringLiteral("call.unanswered");
  case Notification::Kind::NewMessage:
    return QStringLiteral("call.ended");
  }
  return {};
}

} // namespace

DBusNotifications::~DBusNotifications() = default;

void DBusNotifications::Show(int key, const Notification& notification) {
  if (!Connect())
    return;
  if (!entries_.contains(key) && entries_.size() >= kMostEntries)
    for (auto oldest = entries_.begin(); oldest != entries_.end(); ++oldest)
      if (!oldest->second.under_way) {
        entries_.erase(oldest);
        break;
      }
  Entry& entry = entries_[key];
  entry.close = false;
  entry.next = notification;
  Advance(key);
}

void DBusNotifications::Close(int key) {
  const auto found = entries_.find(key);
  if (found == entries_.end())
    return;
  found->second.close = true;
  found->second.next.reset();
  Advance(key);
}

bool DBusNotifications::Connect() {
  if (bus_ != nullptr)
    return bus_->isConnected();
  qDBusRegisterMetaType<NotificationPicture>();
  bus_ = std::make_unique<QDBusConnection>(QDBusConnection::sessionBus());
  if (!bus_->isConnected())
    return false;
  signals_ = std::make_unique<BusSignals>([this](const QDBusMessage& signal) { Receive(signal); });
  for (const char* name : {"ActionInvoked", "NotificationClosed"})
    signals_->Subscribe(*bus_, kService, kPath, kService, QLatin1String(name));
  watcher_ = std::make_unique<QDBusServiceWatcher>(kService, *bus_);
  QObject::connect(watcher_.get(), &QDBusServiceWatcher::serviceOwnerChanged, watcher_.get(),
                   [this] { ServiceChanged(); });
  return true;
}

void DBusNotifications::AskCapabilities() {
  if (asking_)
    return;
  asking_ = true;
  auto* reply = new QDBusPendingCallWatcher(bus_->asyncCall(CallOf("GetCapabilities"), kNoTimeLimit), signals_.get());
  QObject::connect(reply, &QDBusPendingCallWatcher::finished, signals_.get(), [this, reply] {
    reply->deleteLater();
    asking_ = false;
    const QDBusPendingReply<QStringList> told = *reply;
    if (told.isError())
      entries_.clear(); // nobody is there to show anything
    else
      capabilities_ = told.value();
    AdvanceAll();
  });
}

void DBusNotifications::AdvanceAll() {
  for (auto entry = entries_.begin(); entry != entries_.end();)
    Advance((entry++)->first);
}

void DBusNotifications::Advance(int key) {
  const auto found = entries_.find(key);
  if (found == entries_.end() || found->second.under_way)
    return;
  Entry& entry = found->second;
  if (entry.close) {
    if (entry.id != 0)
      TakeAway(entry.id);
    entries_.erase(found);
  } else if (entry.next && !capabilities_) {
    AskCapabilities();
  } else if (entry.next) {
    entry.under_way = true;
    Send(key, *std::exchange(entry.next, std::nullopt));
  }
}

void DBusNotifications::Send(int key, const Notification& notification) {
  const bool call = notification.kind == Notification::Kind::IncomingCall;
  QString title = CleanText(notification.title);
  QString text = CleanText(notification.text);
  if (!Can("body")) {
    title += ": " + text.replace('\n', QLatin1String(", "));
    text.clear();
  } else if (Can("body-markup")) {
    text = text.toHtmlEscaped();
  }
  QStringList actions;
  if (Can("actions")) {
    actions << QLatin1String(kNotificationClicked) << QStringLiteral("Show");
    for (const Notification::Button& button : notification.buttons)
      actions << ToText(button.action) << ToText(button.caption);
  }
  QVariantMap hints{{"urgency", QVariant::fromValue(call ? kCritical : kNormal)},
                    {"category", CategoryOf(notification.kind)},
                    {"desktop-entry", "kelmio"},
                    {"image-data", QVariant::fromValue(PictureOf(notification.picture))}};
  QDBusMessage message = CallOf("Notify");
  message.setArguments({"Kelmio", entries_[key].id, "", title, text, actions, hints, call ? kStands : kServiceDecides});
  auto* reply = new QDBusPendingCallWatcher(bus_->asyncCall(message, kNoTimeLimit), signals_.get());
  QObject::connect(reply, &QDBusPendingCallWatcher::finished, signals_.get(), [this, reply, key] {
    reply->deleteLater();
    const auto found = entries_.find(key);
    if (found == entries_.end())
      return;
    const QDBusPendingReply<uint> told = *reply;
    found->second.under_way = false;
    found->second.id = told.isError() ? 0 : told.value();
    if (told.isError() && !found->second.next)
      entries_.erase(found);
    else
      Advance(key);
  });
}

void DBusNotifications::TakeAway(std::uint32_t id) const {
  QDBusMessage message = CallOf("CloseNotification");
  message.setArguments({id});
  bus_->asyncCall(message, kNoTimeLimit);
}

void DBusNotifications::ServiceChanged() {
  capabilities_.reset();
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    entry->second.id = 0;
    const bool over = !entry->second.under_way && !entry->second.next;
    entry = over ? entries_.erase(entry) : std::next(entry);
  }
}

void DBusNotifications::Receive(const QDBusMessage& signal) {
  // Every program on the bus hears these signals, each for the numbers it knows.
  const std::uint32_t id = signal.arguments().value(0).toUInt();
  const auto found = std::ranges::find_if(entries_, [&](const auto& item) { return item.second.id == id; });
  if (id == 0 || found == entries_.end())
    return;
  const int key = found->first;
  if (signal.member() == QLatin1String("ActionInvoked")) {
    on_action(key, signal.arguments().value(1).toString().toStdString());
  } else {
    found->second.id = 0;
    if (!found->second.under_way && !found->second.next)
      entries_.erase(found);
    on_closed(key);
  }
}

} // namespace kelmio

// What talks to services of the desktop, against services of the test's own on a bus of its own.
#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include "qt/dbus_notifications.h"
#include "qt/portal_hot_keys.h"

namespace kelmio {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// One bus for the whole process, since the bus library reads its address once.
class Bus {
public:
  static Bus& Get() {
    static Bus bus;
    return bus;
  }
  QString Address() const { return "unix:path=" + folder_.filePath("bus"); }

private:
  Bus() {
    qputenv("DBUS_SESSION_BUS_ADDRESS", Address().toUtf8());
    daemon_.start("dbus-daemon", {"--session", "--nofork", "--nosyslog", "--print-address", "--address=" + Address()});
    daemon_.waitForReadyRead();
  }
  ~Bus() {
    daemon_.kill();
    daemon_.waitForFinished();
  }
  QTemporaryDir folder_;
  QProcess daemon_;
};

bool Eventually(const std::function<bool()>& condition, int milliseconds = 5000) {
  QElapsedTimer time;
  time.start();
  while (!condition() && time.elapsed() < milliseconds)
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  return condition();
}

/// Answers with what `answer` gives, or never when that is nothing.
class Service : public QDBusVirtualObject {
public:
  using Answer = std::function<std::optional<QVariantList>(const QDBusMessage&)>;

  Service(const QString& name, const QString& path, Answer answer) : name_(name), answer_(std::move(answer)) {
    bus.registerVirtualObject(path, this, QDBusConnection::SubPath);
    bus.registerService(name);
  }
  ~Service() override { QDBusConnection::disconnectFromBus(bus.name()); }

  QString introspect(const QString& /*path*/) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) override {
    calls.push_back(message);
    if (const auto answer = answer_(message))
      bus.send(message.createReply(*answer));
    return true;
  }
  void Signal(const QString& path, const QString& interface, const QString& name, const QVariantList& arguments) {
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
    signal.setArguments(arguments);
    bus.send(signal);
  }
  /// Waits for so many calls in all.
  bool Heard(std::size_t count) {
    return Eventually([&] { return calls.size() >= count; });
  }
  const QVariantList Arguments() const { return calls.back().arguments(); }

  QDBusConnection bus = QDBusConnection::connectToBus(Bus::Get().Address(), "service" + QString::number(++made));
  std::vector<QDBusMessage> calls;

private:
  static inline int made = 0;
  QString name_;
  Answer answer_;
};

const QString kNotifications = "org.freedesktop.Notifications";
const QString kNotificationsPath = "/org/freedesktop/Notifications";

const Notification kHostile = {
    Notification::Kind::IncomingCall, "New call", "<b>Eve</b> & \x1b\n555", "", {{"answer", "Answer"}}};

class Notifier {
public:
  explicit Notifier(const QStringList& capabilities)
      : service(kNotifications, kNotificationsPath, [=, this](const QDBusMessage& call) -> std::optional<QVariantList> {
          if (hangs)
            return std::nullopt;
          if (call.member() == "GetCapabilities")
            return QVariantList{capabilities};
          return call.member() == "Notify" ? QVariantList{++last_id} : QVariantList{};
        }) {}
  uint last_id = 40;
  bool hangs = false;
  Service service;
};

class SessionBus : public testing::Test {
protected:
  SessionBus() { Bus::Get(); }
};

TEST_F(SessionBus, ANotificationSuitsWhatTheServiceCanDo) {
  struct Case {
    QStringList capabilities;
    QString title, text;
    QStringList actions;
  };
  const std::vector<Case> cases = {
      {{"body", "body-markup", "actions"},
       "New call",
       "&lt;b&gt;Eve&lt;/b&gt; &amp;  \n555",
       {"default", "Show", "answer", "Answer"}},
      {{"body"}, "New call", "<b>Eve</b> &  \n555", {}},
      {{}, "New call: <b>Eve</b> &  , 555", "", {}},
  };
  for (const Case& wanted : cases) {
    Notifier desktop(wanted.capabilities);
    DBusNotifications notifications;
    notifications.Show(1, kHostile);
    ASSERT_TRUE(desktop.service.Heard(2));
    const QVariantList sent = desktop.service.Arguments();
    EXPECT_EQ(sent[3].toString(), wanted.title);
    EXPECT_EQ(sent[4].toString(), wanted.text);
    EXPECT_EQ(sent[5].toStringList(), wanted.actions);
    EXPECT_EQ(sent[7].toInt(), 0) << "it stands as long as it rings";
  }
}

TEST_F(SessionBus, OnlyItsOwnNotificationsArePressedAndClosed) {
  Notifier desktop({"body", "actions"});
  DBusNotifications notifications;
  std::vector<std::string> told;
  notifications.on_action = [&](int key, const std::string& action) { told.push_back(std::to_string(key) + action); };
  notifications.on_closed = [&](int key) { told.push_back(std::to_string(key) + "closed"); };
  notifications.Show(7, kHostile);
  ASSERT_TRUE(desktop.service.Heard(2));
  EXPECT_FALSE(Eventually([&] { return !told.empty(); }, 50));
  const auto signal = [&](const char* name, const QVariantList& arguments) {
    desktop.service.Signal(kNotificationsPath, kNotifications, name, arguments);
  };
  signal("ActionInvoked", {99U, "answer"}); // somebody else's
  signal("ActionInvoked", {41U, "answer"});
  signal("NotificationClosed", {41U, 2U});
  EXPECT_TRUE(Eventually([&] { return told.size() >= 2; }));
  EXPECT_THAT(told, ElementsAre("7answer", "7closed"));
  notifications.Show(7, kHostile);
  ASSERT_TRUE(desktop.service.Heard(3));
  EXPECT_EQ(desktop.service.Arguments()[1].toUInt(), 0U) << "the old one is gone";
}

TEST_F(SessionBus, AServiceThatHangsOrIsMissingHoldsNothingUp) {
  QElapsedTimer time;
  time.start();
  DBusNotifications notifications;
  notifications.Show(1, kHostile); // nobody is there
  Eventually([] { return false; }, 50);
  Notifier desktop({"body"});
  desktop.hangs = true;
  for (int key = 2; key < 100; ++key)
    notifications.Show(key, kHostile);
  EXPECT_LT(time.elapsed(), 2000);
  ASSERT_TRUE(desktop.service.Heard(1));
  EXPECT_FALSE(Eventually([&] { return desktop.service.calls.size() > 1; }, 100)) << "asked once";
  notifications.Close(98);
  desktop.hangs = false;
  desktop.service.bus.send(desktop.service.calls.front().createReply(QVariantList{QStringList{"body"}}));
  EXPECT_TRUE(Eventually([&] { return desktop.last_id == 40 + 15; })) << "the latest ones are shown when it is back";
}

const QString kPortal = "org.freedesktop.portal.Desktop";
const QString kPortalPath = "/org/freedesktop/portal/desktop";
const QString kShortcuts = "org.freedesktop.portal.GlobalShortcuts";
constexpr int kCtrlAltShift = 7;
constexpr int kF8 = 119;

/// Makes a session and binds what it is asked to, with `response` as the user's word.
class Portal {
public:
  explicit Portal(uint response) : response_(response) {}

  std::vector<std::string> Calls() const {
    std::vector<std::string> names;
    for (const QDBusMessage& call : service.calls)
      names.push_back(call.member().toStdString());
    return names;
  }
  QString session = kPortalPath + "/session/1_1/some";

private:
  std::optional<QVariantList> Answer(const QDBusMessage& call) {
    if (call.interface() != kShortcuts)
      return QVariantList{};
    const auto options = qdbus_cast<QVariantMap>(call.arguments().back());
    const QString path =
        kPortalPath + "/request/" + call.service().mid(1).replace('.', '_') + "/" + options["handle_token"].toString();
    // Before the reply, as a quick portal may do.
    service.Signal(path, "org.freedesktop.portal.Request", "Response",
                   {response_, QVariantMap{{"session_handle", session}}});
    return QVariantList{QVariant::fromValue(QDBusObjectPath(path))};
  }
  uint response_;

public:
  Service service{kPortal, kPortalPath, [this](const QDBusMessage& call) { return Answer(call); }};
};

TEST_F(SessionBus, APortalGivesAKeyAndTakesItBack) {
  Portal portal(0);
  PortalHotKeys keys;
  std::vector<int> pressed;
  keys.on_hot_key = [&](int id) { pressed.push_back(id); };
  EXPECT_TRUE(keys.RegisterHotKey(5, kCtrlAltShift, kF8));
  ASSERT_TRUE(portal.service.Heard(3));
  EXPECT_THAT(portal.Calls(), ElementsAre("Register", "CreateSession", "BindShortcuts"));
  const QVariantList bound = portal.service.Arguments();
  EXPECT_EQ(bound[0].value<QDBusObjectPath>().path(), portal.session);
  const auto shortcuts = qvariant_cast<QDBusArgument>(bound[1]);
  EXPECT_EQ(shortcuts.currentSignature(), "a(sa{sv})");
  QString name;
  QVariantMap details;
  shortcuts.beginArray();
  shortcuts.beginStructure();
  shortcuts >> name >> details;
  EXPECT_EQ(details["preferred_trigger"].toString(), "CTRL+ALT+SHIFT+F8");
  for (const QString& session : {QString("/another"), portal.session})
    portal.service.Signal(kPortalPath, kShortcuts, "Activated",
                          {QVariant::fromValue(QDBusObjectPath(session)), name, qulonglong{1}, QVariantMap()});
  EXPECT_TRUE(Eventually([&] { return !pressed.empty(); }));
  EXPECT_THAT(pressed, ElementsAre(5));
  EXPECT_TRUE(keys.UnregisterHotKey(5));
  EXPECT_FALSE(keys.UnregisterHotKey(5));
  ASSERT_TRUE(portal.service.Heard(4));
  EXPECT_EQ(portal.service.calls.back().member(), "Close");
  EXPECT_EQ(portal.service.calls.back().path(), portal.session);
}

TEST_F(SessionBus, APortalThatRefusesIsMissingOrHangsHoldsNothingUp) {
  QElapsedTimer time;
  time.start();
  {
    PortalHotKeys keys;
    keys.RegisterHotKey(1, kCtrlAltShift, kF8); // nobody is there
    Eventually([] { return false; }, 50);
    EXPECT_TRUE(keys.UnregisterHotKey(1));
  }
  {
    Portal portal(1);
    PortalHotKeys keys;
    keys.RegisterHotKey(1, kCtrlAltShift, kF8);
    ASSERT_TRUE(portal.service.Heard(2));
    EXPECT_FALSE(Eventually([&] { return portal.service.calls.size() > 2; }, 100)) << "nothing to bind to";
  }
  {
    Service silent(kPortal, kPortalPath, [](const QDBusMessage&) { return std::nullopt; });
    PortalHotKeys keys;
    keys.RegisterHotKey(1, kCtrlAltShift, kF8);
    ASSERT_TRUE(silent.Heard(2));
    keys.UnregisterHotKey(1);
    ASSERT_TRUE(silent.Heard(3));
    EXPECT_EQ(silent.calls.back().member(), "Close") << "the question is taken back";
  }
  EXPECT_LT(time.elapsed(), 3000);
  PortalHotKeys keys;
  EXPECT_FALSE(keys.RegisterHotKey(1, kCtrlAltShift, 27)) << "no key of ours";
}

} // namespace
} // namespace kelmio

#include "address_books/readers/desktop_address_book.h"

#include <gio/gio.h>
#include <libebook/libebook.h>

#include <memory>
#include <string_view>

#include "address_books/readers/card_item.h"

namespace kelmio {

namespace {

using std::chrono::milliseconds;

/// The name on the session bus under which the service tells which address books there are.
constexpr const char* kSourcesName = "org.gnome.evolution.dataserver.Sources5";

/// The service has to start first, as a rule.
constexpr milliseconds kPatienceForSources{6000};
constexpr milliseconds kPatienceForBook{5000};
/// Between two batches of contacts.
constexpr milliseconds kPatienceForContacts{5000};

/// "Don't wait": an address book that lies elsewhere shows what it has of it here.
constexpr guint32 kNoWaitForNetwork = static_cast<guint32>(-1);

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T> using Object = std::unique_ptr<T, Unref>;

struct FreeVariant {
  void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using Variant = std::unique_ptr<GVariant, FreeVariant>;

/// A main loop that runs until it is told to stop or nothing has happened for too long.
class Wait {
public:
  explicit Wait(milliseconds patience)
      : patience_(patience), loop_(g_main_loop_new(nullptr, FALSE)), cancellable_(g_cancellable_new()) {
    SetAlarm();
  }
  ~Wait() {
    ClearAlarm();
    g_main_loop_unref(loop_);
  }
  Wait(const Wait&) = delete;
  Wait& operator=(const Wait&) = delete;

  void Run() { g_main_loop_run(loop_); }
  void Stop() { g_main_loop_quit(loop_); }
  /// Something has happened: the patience begins anew.
  void Restart() {
    ClearAlarm();
    SetAlarm();
  }
  void StopWhenOutOfPatience() { stop_ = true; }
  GCancellable* Cancellable() const { return cancellable_.get(); }

  /// The end of an asynchronous call that was given this as its data.
  static void Finished(GObject*, GAsyncResult* result, gpointer data) {
    auto* wait = static_cast<Wait*>(data);
    wait->result_.reset(G_ASYNC_RESULT(g_object_ref(result)));
    wait->Stop();
  }
  GAsyncResult* Result() const { return result_.get(); }

private:
  void SetAlarm() {
    alarm_ = g_timeout_add(
        static_cast<guint>(patience_.count()),
        [](gpointer data) -> gboolean {
          static_cast<Wait*>(data)->OutOfPatience();
          return G_SOURCE_REMOVE;
        },
        this);
  }
  void ClearAlarm() {
    if (alarm_ != 0)
      g_source_remove(alarm_);
    alarm_ = 0;
  }
  /// A cancelled call still ends with its result, which has to be waited for.
  void OutOfPatience() {
    alarm_ = 0;
    g_cancellable_cancel(cancellable_.get());
    if (stop_)
      Stop();
  }

  milliseconds patience_;
  GMainLoop* loop_;
  Object<GCancellable> cancellable_;
  Object<GAsyncResult> result_;
  guint alarm_ = 0;
  bool stop_ = false;
};

/// One answer of the session bus itself; null when it has none in time.
Variant AskBus(GDBusConnection* bus, const char* method, GVariant* arguments, const char* answer, int patience) {
  return Variant(g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                             "org.freedesktop.DBus", method, arguments, G_VARIANT_TYPE(answer),
                                             G_DBUS_CALL_FLAGS_NONE, patience, nullptr, nullptr));
}

Object<GDBusConnection> SessionBus(milliseconds patience) {
  Wait wait(patience);
  g_bus_get(G_BUS_TYPE_SESSION, wait.Cancellable(), Wait::Finished, &wait);
  wait.Run();
  return Object<GDBusConnection>(g_bus_get_finish(wait.Result(), nullptr));
}

/// Contacts come in batches while this is alive.
class ContactStream {
public:
  ContactStream(EBookClientView* view, const ItemSink& take, Wait& wait) : take_(take), wait_(wait), view_(view) {
    added_ = g_signal_connect(view_, "objects-added", G_CALLBACK(ContactsAdded), this);
    complete_ = g_signal_connect(view_, "complete", G_CALLBACK(Complete), this);
  }
  ~ContactStream() {
    g_signal_handler_disconnect(view_, added_);
    g_signal_handler_disconnect(view_, complete_);
  }
  ContactStream(const ContactStream&) = delete;
  ContactStream& operator=(const ContactStream&) = delete;

private:
  static void ContactsAdded(EBookClientView*, GSList* contacts, gpointer data) {
    auto* self = static_cast<ContactStream*>(data);
    for (GSList* at = contacts; at != nullptr; at = at->next)
      if (const auto item = ItemOfCard(E_VCARD(at->data)))
        self->take_(*item);
    self->wait_.Restart();
  }
  static void Complete(EBookClientView*, const GError*, gpointer data) {
    static_cast<ContactStream*>(data)->wait_.Stop();
  }

  const ItemSink& take_;
  Wait& wait_;
  EBookClientView* view_;
  gulong added_ = 0;
  gulong complete_ = 0;
};

void ReadBook(ESource* source, const ItemSink& take) {
  Wait connecting(kPatienceForBook);
  e_book_client_connect(source, kNoWaitForNetwork, connecting.Cancellable(), Wait::Finished, &connecting);
  connecting.Run();
  const Object<EClient> client(e_book_client_connect_finish(connecting.Result(), nullptr));
  if (!client)
    return;

  // The expression that every contact fulfils.
  Wait viewing(kPatienceForBook);
  e_book_client_get_view(E_BOOK_CLIENT(client.get()), "(contains \"x-evolution-any-field\" \"\")",
                         viewing.Cancellable(), Wait::Finished, &viewing);
  viewing.Run();
  EBookClientView* opened = nullptr;
  e_book_client_get_view_finish(E_BOOK_CLIENT(client.get()), viewing.Result(), &opened, nullptr);
  const Object<EBookClientView> view(opened);
  if (!view)
    return;

  Wait reading(kPatienceForContacts);
  reading.StopWhenOutOfPatience();
  const ContactStream stream(view.get(), take, reading);
  e_book_client_view_start(view.get(), nullptr);
  reading.Run();
  e_book_client_view_stop(view.get(), nullptr);
}

} // namespace

bool DesktopServiceAnswers(milliseconds patience) {
  const Object<GDBusConnection> bus = SessionBus(patience);
  if (!bus)
    return false;
  const int limit = static_cast<int>(patience.count());
  gboolean owned = FALSE;
  if (const Variant answer = AskBus(bus.get(), "NameHasOwner", g_variant_new("(s)", kSourcesName), "(b)", limit))
    g_variant_get(answer.get(), "(b)", &owned);
  if (owned != FALSE)
    return true;
  const Variant answer = AskBus(bus.get(), "ListActivatableNames", nullptr, "(as)", limit);
  if (!answer)
    return false;
  const Variant names(g_variant_get_child_value(answer.get(), 0));
  for (gsize index = 0; index < g_variant_n_children(names.get()); ++index) {
    const Variant name(g_variant_get_child_value(names.get(), index));
    if (g_variant_get_string(name.get(), nullptr) == std::string_view(kSourcesName))
      return true;
  }
  return false;
}

bool ReadDesktopAddressBooks(const ItemSink& take, const std::function<void()>& alive) {
  Wait wait(kPatienceForSources);
  e_source_registry_new(wait.Cancellable(), Wait::Finished, &wait);
  wait.Run();
  const Object<ESourceRegistry> registry(e_source_registry_new_finish(wait.Result(), nullptr));
  if (!registry)
    return false;
  GList* sources = e_source_registry_list_enabled(registry.get(), E_SOURCE_EXTENSION_ADDRESS_BOOK);
  for (GList* at = sources; at != nullptr; at = at->next) {
    alive();
    ReadBook(E_SOURCE(at->data), take);
  }
  g_list_free_full(sources, g_object_unref);
  return true;
}

} // namespace kelmio

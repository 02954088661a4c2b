// Puts cards in the desktop's address books, as a mail program does: the first in the one that is always there, each
// further one in a new address book of its own.
#include <libebook/libebook.h>

#include <cstdlib>

namespace {

ESource* NewAddressBook(ESourceRegistry* registry, GError** error) {
  ESource* source = e_source_new(nullptr, nullptr, error);
  e_source_set_display_name(source, "Another one");
  e_source_set_parent(source, "local-stub");
  e_source_backend_set_backend_name(E_SOURCE_BACKEND(e_source_get_extension(source, E_SOURCE_EXTENSION_ADDRESS_BOOK)),
                                    "local");
  e_source_registry_commit_source_sync(registry, source, nullptr, error);
  return source;
}

void Add(ESource* source, const char* card, GError** error) {
  constexpr guint32 kNoWaitForNetwork = static_cast<guint32>(-1);
  EClient* client = e_book_client_connect_sync(source, kNoWaitForNetwork, nullptr, error);
  if (client == nullptr)
    return;
  EContact* contact = e_contact_new_from_vcard(card);
  e_book_client_add_contact_sync(E_BOOK_CLIENT(client), contact, E_BOOK_OPERATION_FLAG_NONE, nullptr, nullptr, error);
  g_object_unref(contact);
  g_object_unref(client);
}

} // namespace

int main(int argc, char** argv) {
  GError* error = nullptr;
  ESourceRegistry* registry = e_source_registry_new_sync(nullptr, &error);
  for (int index = 1; index < argc && error == nullptr; ++index) {
    ESource* source =
        index == 1 ? e_source_registry_ref_builtin_address_book(registry) : NewAddressBook(registry, &error);
    if (error == nullptr)
      Add(source, argv[index], &error);
    g_object_unref(source);
  }
  g_clear_object(&registry);
  if (error == nullptr)
    return EXIT_SUCCESS;
  g_printerr("%s\n", error->message);
  g_error_free(error);
  return EXIT_FAILURE;
}

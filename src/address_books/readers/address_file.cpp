#include "address_books/readers/address_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <libebook-contacts/libebook-contacts.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <utility>

#include "address_books/readers/card_item.h"
#include "address_books/readers/csv_file.h"
#include "address_books/readers/vcard_lines.h"

namespace kelmio {

namespace {

/// Photos make cards large; what is beyond this has another purpose.
constexpr off_t kLargestFile = 256 << 20;

/// Only of a regular file: a device or a named pipe might never end.
std::optional<std::string> BytesOf(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0)
    return std::nullopt;
  std::optional<std::string> bytes;
  struct stat status = {};
  if (fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= kLargestFile) {
    bytes.emplace(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t have = 0;
    while (have < bytes->size()) {
      const ssize_t count = read(file, bytes->data() + have, bytes->size() - have);
      if (count < 0 && errno == EINTR)
        continue;
      if (count <= 0)
        break;
      have += static_cast<std::size_t>(count);
    }
    bytes->resize(have);
  }
  close(file);
  return bytes;
}

void ReadCards(const std::string& text, const ItemSink& take) {
  ForEachCard(text, [&](const std::string& card) {
    const std::unique_ptr<EVCard, decltype(&g_object_unref)> parsed(e_vcard_new_from_string(card.c_str()),
                                                                    &g_object_unref);
    if (const auto item = ItemOfCard(parsed.get()))
      take(*item);
  });
}

} // namespace

bool ReadAddressFile(const std::string& path, const ItemSink& take) {
  std::optional<std::string> bytes = BytesOf(path);
  return bytes && ReadAddressBytes(std::move(*bytes), take);
}

bool ReadAddressBytes(std::string bytes, const ItemSink& take) {
  const std::string text = WithoutByteOrderMark(std::move(bytes));
  if (!HasCard(text))
    return ReadCsv(text, take);
  ReadCards(text, take);
  return true;
}

} // namespace kelmio

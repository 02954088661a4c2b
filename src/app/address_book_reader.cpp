// Reads the address books of other programs for the answering machine, in a process of its own.
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "address_books/item_stream.h"
#include "address_books/readers/address_file.h"
#include "address_books/readers/desktop_address_book.h"
#include "address_books/readers/quiet_libraries.h"

namespace kelmio {

namespace {

/// The session bus is on this computer; one that needs longer doesn't answer.
constexpr std::chrono::milliseconds kPatienceForProbe{700};

/// A hostile file shall not take the computer with it.
constexpr rlim_t kMostSeconds = 60;
constexpr rlim_t kMostMemory = rlim_t{1} << 30U;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryCanBeLimited = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kMemoryCanBeLimited = false;
#else
constexpr bool kMemoryCanBeLimited = true;
#endif
#else
constexpr bool kMemoryCanBeLimited = true;
#endif

void Limit(decltype(RLIMIT_CPU) resource, rlim_t most) {
  const rlimit limit{most, most};
  setrlimit(resource, &limit);
}

void LimitSelf() {
  Limit(RLIMIT_CPU, kMostSeconds);
  Limit(RLIMIT_CORE, 0);
  // The sanitizers reserve more addresses than any machine has memory.
  if (kMemoryCanBeLimited)
    Limit(RLIMIT_AS, kMostMemory);
}

/// Standard output. Nobody listens any longer when it fails, so there is nothing more to do.
void Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR)
      continue;
    if (count < 0)
      std::_Exit(EXIT_FAILURE);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void WriteItem(const AddressItem& item) {
  Write(EncodedItem(item));
}

int Run(const std::vector<std::string>& arguments) {
  const std::string what = arguments.empty() ? "" : arguments.front();
  if (what == "probe" && arguments.size() == 1)
    return DesktopServiceAnswers(kPatienceForProbe) ? EXIT_SUCCESS : EXIT_FAILURE;
  bool read = false;
  if (what == "desktop" && arguments.size() == 1)
    read = ReadDesktopAddressBooks(WriteItem, [] { Write(EncodedSignOfLife()); });
  else if (what == "file" && arguments.size() == 2)
    read = ReadAddressFile(arguments[1], WriteItem);
  if (!read)
    return EXIT_FAILURE;
  Write(EncodedEnd());
  return EXIT_SUCCESS;
}

} // namespace

} // namespace kelmio

int main(int argc, char** argv) {
  kelmio::LimitSelf();
  kelmio::QuietLibraries();
  return kelmio::Run({argv + 1, argv + argc});
}

#include "address_books/readers/quiet_libraries.h"

#include <glib.h>

namespace kelmio {

namespace {

GLogWriterOutput Drop(GLogLevelFlags, const GLogField*, gsize, gpointer) {
  return G_LOG_WRITER_HANDLED;
}

} // namespace

void QuietLibraries() {
  g_log_set_writer_func(Drop, nullptr, nullptr);
}

} // namespace kelmio

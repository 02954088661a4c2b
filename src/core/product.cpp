#include "core/product.h"

namespace kelmio::product {

const char* Version() {
  return KELMIO_VERSION;
}

const char* Website() {
  return KELMIO_WEBSITE;
}

const char* Contact() {
  return KELMIO_CONTACT;
}

} // namespace kelmio::product

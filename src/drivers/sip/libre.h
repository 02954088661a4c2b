// The one door to libre, whose headers are made for C.
#pragma once

// libre defines the fixed-width types and `bool` by itself unless it is told that the system has them.
#include <cstdint>

#ifndef HAVE_STDBOOL_H
#define HAVE_STDBOOL_H
#endif
#ifndef HAVE_INTTYPES_H
#define HAVE_INTTYPES_H
#endif
#ifndef HAVE_INET6
#define HAVE_INET6
#endif
// Without this its inline buffer functions stop the process at a position past the end.
#ifndef RELEASE
#define RELEASE
#endif
#ifndef restrict
#define restrict
#include <re.h>
#undef restrict
#else
#include <re.h>
#endif
// A macro of libre whose name is too common to leak.
#undef BREAKPOINT

#include <memory>
#include <string>
#include <string_view>

namespace kelmio {

/// One reference to an object of libre.
struct ReDeleter {
  void operator()(void* object) const { mem_deref(object); }
};
template <typename Object> using RePtr = std::unique_ptr<Object, ReDeleter>;

inline std::string_view ToView(const pl& text) {
  return text.p ? std::string_view(text.p, text.l) : std::string_view{};
}

inline std::string ToText(const sa& address) {
  char text[80] = "";
  re_snprintf(text, sizeof(text), "%J", &address);
  return text;
}

inline std::string HostText(const sa& address) {
  char text[64] = "";
  re_snprintf(text, sizeof(text), "%j", &address);
  return text;
}

} // namespace kelmio

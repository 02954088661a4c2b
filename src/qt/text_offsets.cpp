#include "qt/text_offsets.h"

#include <algorithm>

namespace kelmio {

namespace {

struct Step {
  std::size_t bytes = 1;
  std::size_t units = 1;
};

/// The character at `offset`, which lies inside the text.
Step StepAt(std::string_view text, std::size_t offset, TextForm form) {
  const auto lead = static_cast<unsigned char>(text[offset]);
  if (form.folds_line_ends && lead == '\r' && offset + 1 < text.size() && text[offset + 1] == '\n')
    return {2, 1};
  if (!form.utf8 || lead < 0xC0)
    return {1, 1};
  // Lead bytes of RFC 3629; what takes four bytes takes a surrogate pair.
  if (lead < 0xE0)
    return {2, 1};
  return lead < 0xF0 ? Step{3, 1} : Step{4, 2};
}

} // namespace

std::size_t ShownOffset(std::string_view text, std::size_t offset, TextForm form) {
  const std::size_t end = std::min(offset, text.size());
  std::size_t shown = 0;
  for (std::size_t at = 0; at < end;) {
    const Step step = StepAt(text, at, form);
    at += step.bytes;
    shown += step.units;
  }
  return shown;
}

std::size_t StoredOffset(std::string_view text, std::size_t shown, TextForm form) {
  std::size_t at = 0;
  for (std::size_t units = 0; at < text.size() && units < shown;) {
    const Step step = StepAt(text, at, form);
    at += step.bytes;
    units += step.units;
  }
  return std::min(at, text.size());
}

} // namespace kelmio

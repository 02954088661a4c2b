#include "app/stderr_journal.h"

#include <cstdio>

namespace kelmio {

void StderrJournal::Write(const std::string& line) {
  const LocalDateTime now = clock_.Now();
  std::fprintf(stderr, "%04d-%02d-%02d %02d:%02d:%02d %s\n", now.year, now.month, now.day, now.hour, now.minute,
               now.second, line.c_str());
}

} // namespace kelmio

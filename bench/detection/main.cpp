// detection_bench [MESSAGES [FIRST]]: how the ends of messages are found, over a corpus of 5000 messages.
#include <cstdio>
#include <cstdlib>

#include "detection/measure.h"

namespace {

using namespace kelmio::bench;

void Print(const char* name, const Figures::Row& row) {
  if (row.messages != 0)
    std::printf("%-18s %6u messages  %4u false stops %6.2f %%  %6.2f %% ended in time  slowest %6.1f s\n", name,
                row.messages, row.false_stops, 100 * row.FalseStopShare(), 100 * row.InTimeShare(), row.slowest);
}

} // namespace

int main(int count, char** arguments) {
  constexpr unsigned kMessages = 5000;
  const auto number = [&](int at, unsigned otherwise) {
    return count > at ? static_cast<unsigned>(std::strtoul(arguments[at], nullptr, 10)) : otherwise;
  };
  const unsigned messages = number(1, kMessages);
  const unsigned first = number(2, 0);
  try {
    const Figures figures = Measure(first, first + messages);
    std::fputs(figures.faults.c_str(), stdout);
    for (std::size_t i = 0; i < figures.contents.size(); ++i)
      Print(NameOf(static_cast<Content>(i)), figures.contents[i]);
    for (std::size_t i = 0; i < figures.endings.size(); ++i)
      Print(NameOf(static_cast<Ending>(i)), figures.endings[i]);
    for (std::size_t i = 0; i < figures.codings.size(); ++i)
      Print(NameOf(static_cast<Coding>(i)), figures.codings[i]);
    Print("lossy", figures.lossy);
    Print("all", figures.all);
    return figures.all.FalseStopShare() < Figures::kMostFalseStops && figures.all.InTimeShare() >= Figures::kLeastInTime
               ? 0
               : 1;
  } catch (const NoSpeech& trouble) {
    std::fprintf(stderr, "%s\n", trouble.what());
    return 2;
  }
}

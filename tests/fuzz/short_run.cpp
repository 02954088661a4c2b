// The short form of a fuzz target: its seeds, and damaged ones in the same order every time.
#include <gtest/gtest.h>

#include <chrono>

#include "fuzz/fuzz_target.h"
#include "fuzz/mutated.h"

namespace kelmio::fuzz {
namespace {

using namespace std::chrono_literals;

void Feed(const std::string& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

TEST(FuzzTest, HoldsForSeedsAndForDamagedOnes) {
  const std::vector<std::string> seeds = Seeds();
  for (const std::string& seed : seeds)
    Feed(seed);
  std::mt19937 random(20261123);
  constexpr int kLeast = 200; // on the slowest machine
  const auto end = std::chrono::steady_clock::now() + 2s;
  std::string input;
  for (int i = 0; i < kLeast || std::chrono::steady_clock::now() < end; ++i) {
    // Most begin at a seed, some go on from damage that was done.
    if (i % 4 != 3 || input.empty())
      input = seeds[random() % seeds.size()];
    input = Mutated(std::move(input), seeds[random() % seeds.size()], random);
    Feed(input);
  }
}

} // namespace
} // namespace kelmio::fuzz

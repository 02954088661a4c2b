// Gives libFuzzer the seeds: it reads them from a folder, which it looks into after this.
#include <cstdlib>
#include <fstream>

#include "fuzz/fuzz_target.h"

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  const char* folder = std::getenv("KELMIO_SEEDS");
  int number = 0;
  if (folder)
    for (const std::string& seed : kelmio::fuzz::Seeds())
      std::ofstream(std::string(folder) + "/seed" + std::to_string(number++), std::ios::binary) << seed;
  return 0;
}

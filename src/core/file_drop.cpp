#include "core/file_drop.h"

namespace kelmio {

namespace {

constexpr char kHeaderSize = 20;

} // namespace

std::string FileDropBlock(const std::vector<std::string>& paths) {
  std::string block(kHeaderSize, '\0');
  block[0] = kHeaderSize; // where the list begins; all other fields are zero
  for (const std::string& path : paths) {
    block += path;
    block += '\0';
  }
  block += '\0';
  return block;
}

} // namespace kelmio

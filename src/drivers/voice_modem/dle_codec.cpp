#include "drivers/voice_modem/dle_codec.h"

#include <utility>

namespace kelmio {

std::string ShieldSamples(std::string_view samples) {
  std::string shielded;
  shielded.reserve(samples.size() + samples.size() / 64 + 2);
  for (const char sample : samples) {
    if (sample == kDle)
      shielded.push_back(kDle);
    shielded.push_back(sample);
  }
  return shielded;
}

std::string DleCommand(char code) {
  return {kDle, code};
}

std::optional<std::string_view> DleDecoder::Push(std::string_view bytes, std::string& samples, const CodeSink& sink) {
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    const char byte = bytes[at];
    if (!std::exchange(after_dle_, false)) {
      if (byte == kDle)
        after_dle_ = true;
      else
        samples.push_back(byte);
    } else if (byte == kDle) {
      samples.push_back(kDle);
    } else if (byte == kSub) {
      samples.append(2, kDle);
    } else {
      sink(byte);
      if (byte == kEtx)
        return bytes.substr(at + 1);
    }
  }
  return std::nullopt;
}

} // namespace kelmio

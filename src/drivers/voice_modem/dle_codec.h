// The stream of samples between computer and modem, in which <DLE> stands before every code (ITU-T V.253).
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kelmio {

inline constexpr char kDle = 0x10;
inline constexpr char kEtx = 0x03;
inline constexpr char kCan = 0x18;
inline constexpr char kSub = 0x1A;
inline constexpr char kEsc = 0x1B;

/// Codes that the computer sends, each after a <DLE>.
namespace dle_command {
inline constexpr char kEndPlay = kEtx;  // play what is buffered, then end
inline constexpr char kDropPlay = kCan; // forget what is buffered
inline constexpr char kAbortRecord = '!';
inline constexpr char kEndRecord = kEsc; // end after what is buffered
inline constexpr char kEndDuplex = '^';
} // namespace dle_command

/// Samples as they are sent: every <DLE> twice.
std::string ShieldSamples(std::string_view samples);

/// <DLE> and a code.
std::string DleCommand(char code);

/// Takes samples and codes apart again. Any one thread.
class DleDecoder {
public:
  /// A code that is no sample, <ETX> among them.
  using CodeSink = std::function<void(char code)>;

  /// Appends the samples to `samples` and gives the codes to `sink`. Returns what comes after the end of the stream, or
  /// nothing while it goes on. A <DLE> at the end of a read waits for the next one. Codes that stand for two samples
  /// or one are samples.
  std::optional<std::string_view> Push(std::string_view bytes, std::string& samples, const CodeSink& sink);

  /// Forgets a lone <DLE>, before another stream.
  void Reset() { after_dle_ = false; }

private:
  bool after_dle_ = false;
};

} // namespace kelmio

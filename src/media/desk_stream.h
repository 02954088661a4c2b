// Microphone and loudspeaker of the desk as one stream.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace kelmio {

inline constexpr int kDeskRate = 16000; // samples per second, mono
/// Samples of a frame: 20 milliseconds.
inline constexpr std::size_t kDeskFrame = kDeskRate / 50;

/// Who speaks and listens at the desk. Both are called on the stream's own thread, never on the user interface
/// thread, a frame of `kDeskFrame` samples at a time. They don't block, allocate little and never throw.
class DeskClient {
public:
  virtual ~DeskClient() = default;
  /// Fills what the loudspeaker plays next; silence where there is nothing to hear.
  virtual void ToPlay(std::span<std::int16_t> frame) noexcept = 0;
  /// What the microphone heard. `echo_delay_ms`: how long it is, at present, from `ToPlay` until the microphone hears
  /// that frame and it comes back here.
  virtual void Captured(std::span<const std::int16_t> frame, int echo_delay_ms) noexcept = 0;
};

/// User interface thread only.
class DeskStream {
public:
  virtual ~DeskStream() = default;
  /// Opens microphone and loudspeaker, and keeps them open, through the loss and return of a device or of the whole
  /// sound server, until `Stop`. Doesn't wait for anything. `trouble` takes plain words for the status pane on the
  /// user interface thread, never from inside this call and never after `Stop`. A running stream is stopped first.
  virtual void Start(std::shared_ptr<DeskClient> client, std::function<void(const std::string&)> trouble) = 0;
  /// Closes both; the client isn't called any more once this returns. Nothing happens when it is stopped.
  virtual void Stop() = 0;
};

} // namespace kelmio

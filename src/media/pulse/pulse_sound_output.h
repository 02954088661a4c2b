// The sound output on the desktop's sound server.
#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "media/sound_output.h"
#include "platform/event_loop.h"

namespace kelmio {

class PulseMailbox;
class PulseProgress;
class PulseThread;

/// Through the default device of the moment. Each sound has a connection of its own, opened by its start and given
/// back when it has been heard; in between nothing runs. The file is read on the connection's thread, seconds
/// ahead of what is heard, so neither a busy user interface nor a slow disk makes the sound stutter.
///
/// A start waits a fraction of a second for a server that doesn't answer; the sound then runs on a clock, and is heard
/// from where the clock is as soon as the server answers. While it is known to hang it isn't waited for again.
/// User interface thread only; the loop outlives the output.
class PulseSoundOutput : public SoundOutput {
public:
  explicit PulseSoundOutput(EventLoop& loop);
  ~PulseSoundOutput() override;

  bool Start(std::unique_ptr<WaveReader> sound) override;
  void Stop() override;
  long Heard() const override;

private:
  EventLoop& loop_;
  std::optional<std::chrono::steady_clock::time_point> hung_until_; // the server, as far as is known
  std::shared_ptr<PulseProgress> progress_;                         // of what plays
  std::shared_ptr<PulseMailbox> mailbox_;
  std::unique_ptr<PulseThread> thread_;
};

} // namespace kelmio

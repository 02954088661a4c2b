// Microphone and loudspeaker on the desktop's sound server.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "media/desk_stream.h"
#include "platform/event_loop.h"

namespace kelmio {

class PulseDeskDoor;
class PulseMailbox;
class PulseThread;

/// The default devices of the moment; the server moves the sound along when the user chooses others. Where there is
/// only one of the two, that one runs: without a loudspeaker the client's `ToPlay` isn't called, and without a
/// microphone its `Captured`. What is missing is looked for about once a second. The words of trouble come when what
/// there is has changed, once each. The loop outlives the stream.
class PulseDeskStream : public DeskStream {
public:
  explicit PulseDeskStream(EventLoop& loop);
  ~PulseDeskStream() override;

  void Start(std::shared_ptr<DeskClient> client, std::function<void(const std::string&)> trouble) override;
  /// Waits a fraction of a second at most, also for a library that hangs.
  void Stop() override;

private:
  EventLoop& loop_;
  std::shared_ptr<PulseMailbox> mailbox_;
  std::shared_ptr<PulseDeskDoor> door_;
  std::unique_ptr<PulseThread> thread_;
};

} // namespace kelmio

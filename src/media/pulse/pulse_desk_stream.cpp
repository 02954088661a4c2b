#include "media/pulse/pulse_desk_stream.h"

#include <utility>

#include "media/pulse/pulse_desk_work.h"
#include "media/pulse/pulse_mailbox.h"
#include "media/pulse/pulse_thread.h"

namespace kelmio {

PulseDeskStream::PulseDeskStream(EventLoop& loop) : loop_(loop) {}

PulseDeskStream::~PulseDeskStream() {
  Stop();
}

void PulseDeskStream::Start(std::shared_ptr<DeskClient> client, std::function<void(const std::string&)> trouble) {
  Stop();
  mailbox_ = std::make_shared<PulseMailbox>(loop_);
  door_ = std::make_shared<PulseDeskDoor>(std::move(client));
  const auto tell = [box = mailbox_, trouble = std::move(trouble)](const char* words) {
    box->Post([trouble, words] { trouble(words); });
  };
  thread_ = std::make_unique<PulseThread>(std::make_unique<PulseDeskWork>(door_, tell));
}

void PulseDeskStream::Stop() {
  if (!thread_)
    return;
  mailbox_->Close();
  door_->Close();
  thread_.reset();
}

} // namespace kelmio

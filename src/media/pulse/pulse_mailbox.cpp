#include "media/pulse/pulse_mailbox.h"

#include <utility>

namespace kelmio {

void PulseMailbox::Post(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  if (!loop_)
    return;
  loop_->Post([box = shared_from_this(), work = std::move(work)] {
    if (box->Open())
      work();
  });
}

void PulseMailbox::Close() {
  const std::lock_guard lock(mutex_);
  loop_ = nullptr;
}

bool PulseMailbox::Open() {
  const std::lock_guard lock(mutex_);
  return loop_ != nullptr;
}

} // namespace kelmio

#include "media/desk/desk.h"

#include <utility>

namespace kelmio {

std::shared_ptr<DeskHandset> Desk::Take(User& user, std::function<void(const std::string&)> trouble) {
  if (stream_ == nullptr || user_ == &user)
    return nullptr;
  auto handset = std::make_shared<DeskHandset>();
  if (User* const former = std::exchange(user_, &user)) {
    stream_->Stop();
    former->DeskTaken();
  }
  stream_->Start(handset, std::move(trouble));
  return handset;
}

void Desk::Release(const User& user) {
  if (user_ != &user)
    return;
  user_ = nullptr;
  stream_->Stop();
}

void Desk::Close() {
  if (User* const former = std::exchange(user_, nullptr)) {
    stream_->Stop();
    former->DeskTaken();
  }
  stream_ = nullptr;
}

} // namespace kelmio

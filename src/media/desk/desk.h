// Who has the desk's microphone and loudspeaker.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "media/desk/desk_handset.h"
#include "media/desk_stream.h"

namespace kelmio {

/// One call at most speaks at the desk, and microphone and loudspeaker are open exactly while one does. User interface
/// thread only.
class Desk {
public:
  class User {
  public:
    virtual ~User() = default;
    /// Another call has the desk now: the handset is connected to nothing.
    virtual void DeskTaken() = 0;
  };

  /// `stream` stays until `Close`.
  explicit Desk(DeskStream& stream) : stream_(&stream) {}

  /// Opens the stream for `user`, who releases the desk before it ends. Nothing when it has the desk already, and when
  /// the desk is closed. `trouble` as in `DeskStream::Start`.
  std::shared_ptr<DeskHandset> Take(User& user, std::function<void(const std::string&)> trouble);
  /// Nothing happens when `user` doesn't have the desk.
  void Release(const User& user);
  /// Takes the desk from whoever has it, for good: the stream may go.
  void Close();

private:
  DeskStream* stream_; // nothing once closed
  User* user_ = nullptr;
};

} // namespace kelmio

#include "shell/call_notice.h"

#include <utility>

#include "core/text.h"
#include "telephony/call_context.h"
#include "telephony/call_host.h"

namespace kelmio {

namespace {

constexpr const char* kAnswerAction = "answer";
constexpr const char* kHangUpAction = "hang-up";

bool Known(const std::string& number) {
  return !number.empty() && AsciiUpper(number) != AsciiUpper(kUnknown);
}

} // namespace

CallNotice::CallNotice(House house) : house_(std::move(house)) {
  house_.notifications.on_action = [this](int key, const std::string& action) { Act(key, action); };
  house_.notifications.on_closed = [this](int key) {
    if (key == key_) {
      shown_ = false;
      put_away_ = true;
    }
  };
}

CallNotice::~CallNotice() {
  if (stage_ != Stage::None)
    Withdraw();
  house_.notifications.on_action = [](int, const std::string&) {};
  house_.notifications.on_closed = [](int) {};
}

void CallNotice::CallBegan(const CallRef& call) {
  if (stage_ != Stage::None)
    Withdraw();
  Forget();
  call_ = call;
  stage_ = Stage::Begun;
  ++key_;
}

void CallNotice::CallRings(const CallRef& call) {
  if (!Follows(call) || stage_ != Stage::Begun)
    return;
  stage_ = Stage::Rings;
  Announce();
}

void CallNotice::CallerKnown(const CallRef& call, const std::string& name, const std::string& number) {
  if (!Follows(call))
    return;
  name_ = name;
  number_ = number;
  if (stage_ == Stage::Begun)
    stage_ = Stage::Rings;
  Announce();
}

void CallNotice::CallTaken(const CallRef& call, bool by_machine) {
  if (!Follows(call))
    return;
  if (by_machine) {
    stage_ = Stage::Machine;
    Announce();
  } else {
    Withdraw();
    Forget();
  }
}

void CallNotice::MessageBegun(const CallRef& call) {
  if (Follows(call))
    has_message_ = true;
}

void CallNotice::CallDropped(const CallRef& call) {
  if (Follows(call))
    dropped_ = true;
}

void CallNotice::CallOver(const CallRef& call) {
  if (!Follows(call))
    return;
  if (has_message_)
    Show(Notification::Kind::NewMessage, "New message");
  else if (dropped_ || stage_ == Stage::Begun)
    Withdraw();
  else
    Show(Notification::Kind::MissedCall, "Missed call");
  Forget();
}

bool CallNotice::Follows(const CallRef& call) const {
  return stage_ != Stage::None && call != nullptr && call_.lock() == call;
}

void CallNotice::Announce() {
  if (!put_away_)
    Show(Notification::Kind::IncomingCall, "New call");
}

void CallNotice::Show(Notification::Kind kind, const char* title) {
  if (house_.settings.NewCallAlert != 1) {
    Withdraw();
    return;
  }
  Notification notification{kind, title, name_.empty() ? kUnknown : name_, "", {}};
  if (Known(number_)) {
    notification.text += "\n" + number_;
    const std::string contact = house_.contacts.ContactOf(number_);
    if (!contact.empty())
      notification.picture = house_.contacts.PhotoOf(contact);
  }
  if (kind == Notification::Kind::IncomingCall) {
    if (stage_ == Stage::Rings)
      notification.buttons.push_back({kAnswerAction, "Answer"});
    notification.buttons.push_back({kHangUpAction, "Hang up"});
  }
  shown_ = true;
  house_.notifications.Show(key_, notification);
}

void CallNotice::Withdraw() {
  if (std::exchange(shown_, false))
    house_.notifications.Close(key_);
}

void CallNotice::Forget() {
  call_.reset();
  stage_ = Stage::None;
  name_.clear();
  number_.clear();
  shown_ = put_away_ = dropped_ = has_message_ = false;
}

void CallNotice::Act(int key, const std::string& action) {
  if (action == kNotificationClicked)
    house_.show_window();
  // The buttons of a call that is over must not reach the next one.
  else if (key != key_ || stage_ == Stage::None)
    return;
  else if (action == kAnswerAction && stage_ == Stage::Rings)
    house_.execute(kCommandAnswer);
  else if (action == kHangUpAction)
    house_.execute(kCommandHangUp);
}

} // namespace kelmio

#include "shell/cToolTipOnDemand.h"

#include <system_error>
#include <utility>

#include "core/mGeneral.h"
#include "shell/raise.h"

namespace kelmio {

cToolTipOnDemand::~cToolTipOnDemand() {
  Close();
}

void cToolTipOnDemand::MoveTo(int x, int y) {
  Properties.X = x;
  Properties.Y = y;
  if (tip_ != nullptr)
    tip_->MoveTo(x, y);
}

std::optional<std::string> cToolTipOnDemand::Show() {
  Destroy();
  const WindowHandle window = windows_.Create();
  std::unique_ptr<TipWindow> tip =
      tips_.Create(Content(), Properties.X, Properties.Y,
                   [&windows = windows_, window](std::uint32_t message) { windows.Send(window, message, 0, 0); });
  if (tip == nullptr) {
    windows_.Destroy(window);
    return mGeneral::SystemErrorText(static_cast<int>(std::errc::not_supported));
  }
  tip_ = std::move(tip);
  window_ = window;
  subclass_.AttachMessage(*this, window_, window_message::kTimer);
  for (auto message = window_message::kMouseMove; message <= window_message::kLastMouseMessage; ++message)
    subclass_.AttachMessage(*this, window_, message);
  if (Properties.TimeOut > 0)
    windows_.SetTimer(window_, kTimeOutTimer, Properties.TimeOut);
  Raise(BalloonShowed);
  return std::nullopt;
}

void cToolTipOnDemand::Destroy() {
  if (Close())
    Raise(BalloonDestroyed);
}

bool cToolTipOnDemand::Close() {
  if (tip_ == nullptr)
    return false;
  windows_.KillTimer(window_, kTimeOutTimer);
  subclass_.DetachMessage(*this, window_, window_message::kTimer);
  for (auto message = window_message::kMouseMove; message <= window_message::kLastMouseMessage; ++message)
    subclass_.DetachMessage(*this, window_, message);
  windows_.Destroy(std::exchange(window_, 0));
  tip_.reset();
  return true;
}

MessageResult cToolTipOnDemand::WindowProc(WindowHandle /*window*/, std::uint32_t message, MessageWord word,
                                           MessageWord /*long_word*/) {
  const MessageResult result = subclass_.CurrentResult();
  if (message != window_message::kTimer)
    Raise(MouseEvents, message);
  else if (word == static_cast<MessageWord>(kTimeOutTimer))
    Destroy();
  return result;
}

TipContent cToolTipOnDemand::Content() const {
  TipContent content;
  content.balloon = Properties.Style == TipProperties::kBalloon;
  content.centered = Properties.Centered;
  content.icon = Properties.IconType;
  content.title = Properties.Title;
  content.prompt = Properties.Prompt;
  if (Properties.ForeColor != 0)
    content.fore = Properties.ForeColor;
  if (Properties.BackColor != 0)
    content.back = Properties.BackColor;
  return content;
}

} // namespace kelmio

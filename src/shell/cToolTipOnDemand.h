// A balloon at a place of one's choice.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "controls/basic_controls.h"
#include "platform/tip_windows.h"
#include "shell/GSubclass.h"
#include "shell/local_windows.h"

namespace kelmio {

/// What a tip looks like and where it stands.
struct TipProperties {
  static constexpr int kPlain = 0;
  static constexpr int kBalloon = 1;

  int Style = kPlain;
  int IconType = 0; // 1 information, 2 warning, 3 error
  int X = 0;        // in pixels of the screen
  int Y = 0;
  std::uint32_t ParentHwnd = 0; // whom the tip speaks for; it stands above all windows whoever that is
  Color ForeColor = 0;          // 0 is not set
  Color BackColor = 0;          // likewise
  std::string Title;
  std::string Prompt;
  bool Centered = false;
  int TimeOut = 0; // in milliseconds; 0 is none
};

/// Handlers of the events may show or destroy the tip. User interface thread only; what it is made of outlives it.
class cToolTipOnDemand : private ISubclass {
public:
  static constexpr std::uint32_t kTimeOutTimer = 998;

  cToolTipOnDemand(TipWindows& tips, LocalWindows& windows, MSubclass& subclass)
      : tips_(tips), windows_(windows), subclass_(subclass) {}
  ~cToolTipOnDemand() override;

  /// The next `Show` goes by them.
  TipProperties Properties;
  /// A tip that shows moves there at once.
  void MoveTo(int x, int y);

  /// In place of the tip before. A failure is the system's text for it.
  std::optional<std::string> Show();
  /// Nothing happens while no tip shows.
  void Destroy();
  bool Shown() const { return tip_ != nullptr; }

  /// Numbers of the Windows API, from 512 on.
  std::function<void(std::uint32_t message)> MouseEvents = [](std::uint32_t) {};
  std::function<void()> BalloonDestroyed = [] {};
  std::function<void()> BalloonShowed = [] {};

private:
  MessageResponse MsgResponse() const override { return response_; }
  void SetMsgResponse(MessageResponse response) override { response_ = response; }
  MessageResult WindowProc(WindowHandle window, std::uint32_t message, MessageWord word,
                           MessageWord long_word) override;

  TipContent Content() const;
  /// Takes the tip off the screen; whether there was one.
  bool Close();

  TipWindows& tips_;
  LocalWindows& windows_;
  GSubclass subclass_;
  MessageResponse response_ = MessageResponse::OldFirst;
  WindowHandle window_ = 0;
  std::unique_ptr<TipWindow> tip_;
};

} // namespace kelmio

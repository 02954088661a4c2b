// The dialer: a small telephone over the main window's line.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "calls/call_windows.h"
#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/timer.h"
#include "core/app_state.h"
#include "core/settings.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/registry_store.h"
#include "platform/wave_image_player.h"
#include "telephony/call_context.h"
#include "telephony/tapi_control/TAPIExCtl.h"

namespace kelmio {

/// It owns no line: dialing, answering, dropping and recording are the main window's, and a second control instance on
/// the same device only tells this window how the call goes. Closing it leaves the call up. User interface thread only;
/// what is in `House` outlives the window.
class frmDialer : public Form {
public:
  static constexpr std::size_t kKeys = 12;

  /// Where the window stands when it opens.
  enum class Place { OverOwner, WhereItWas };

  struct House {
    const AppState& app;
    Settings& settings;
    RegistryStore& registry;
    CallContext& context;
    DialerEngine& engine;
    LineService& lines;
    EventLoop& loop;
    TimerService& timers;
    const Clipboard& clipboard;
    FilePicker& file_picker;
    WaveImagePlayer& wave_images;
  };
  frmDialer(const House& house, Place place);
  ~frmDialer() override;

  TextBox txtPhoneNumber;
  std::array<Button, kKeys> cmdKeyPad; // "1" to "9", "*", "0", "#"
  Button cmdDelete;
  Button cmdPaste;
  CheckBox chkKeyTones;
  Button cmdDial;
  Button cmdDrop;
  Button cmdAnswer;
  Button cmdRecord;
  Button cmdCancel;
  TextBox txtWaveFile;
  Button cmdBrowse;
  Button cmdPlayWave;
  StatusBar sbStatusBar;
  Timer tmrTime;

  TAPIExCtl myTAPIEx;

  /// Plays the tone of a key, counted from 1, and returns at its end. Nothing of it goes down the line.
  void PlayKeyTone(std::int16_t KeyNumber);

  std::string_view Name() const override { return "frmDialer"; }
  void Load() override;
  bool Centered() const override { return place_ == Place::OverOwner; }
  void EscapePressed() override { Visible = false; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void ListenToCalls();
  void OnConnected(const CallRef& call);
  void OnCallState(CallState state);
  void OnEndCall();
  void OnIdle();

  void cmdKeyPad_Click(std::size_t index);
  void cmdDelete_Click();
  void cmdPaste_Click();
  void chkKeyTones_Click();
  void cmdDial_Click();
  void cmdRecord_Click();
  void cmdBrowse_Click();
  void cmdPlayWave_Click();
  void tmrTime_Timer();
  void SavePlaceAndNumber();

  House house_;
  Place place_;
  bool loaded_ = false;
  std::shared_ptr<TAPILine> dialer_line_;
  CallRef dialer_call_; // the call last seen; the target of "Play File"
  long dialer_seconds_ = 0;
};

} // namespace kelmio

// The alert that tells of a new call.
#pragma once

#include <memory>
#include <string>

#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/picture_box.h"
#include "controls/timer.h"
#include "core/app_state.h"
#include "core/settings.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/window_surface.h"

namespace kelmio {

/// The caller's name and number in a small window at the bottom right of the screen, which never takes the focus and
/// closes itself. Each alert is a form of its own, held by shared pointers. User interface thread only; what is in
/// `House` outlives the alert.
///
/// Whoever closes it does so from the loop, and never inside an event of its window: the closing effect lets events
/// run, in which the end of the program may take the window away.
class frmPopup : public Form, public std::enable_shared_from_this<frmPopup> {
public:
  struct House {
    const AppState& app;
    const Settings& settings;
    EventLoop& loop;
    TimerService& timers;
    Windows& windows;
    WindowSurface& surface;
  };
  explicit frmPopup(const House& house);

  Label lblTitle;
  Label lblName;
  Label lblNumber;
  Button imgClose;
  Timer tmrClose;

  /// How it closes: number of the effect, milliseconds a step, steps.
  int Effect = 0;
  int EffectSpeed = 10;
  int EffectSteps = 15;

  /// Shows the alert of that caller, with its opening effect, in which pending events run: it may have closed already
  /// on return.
  void ShowCall(const std::string& name, const std::string& number);

  std::string_view Name() const override { return "frmPopup"; }
  void VisitControls(ControlVisitor& visitor) override;
  void Load() override;
  bool Centered() const override { return false; }
  /// Closes it a little later.
  bool QueryUnload() override;
  /// With the closing effect, in which pending events run; the caller holds the alert. A second call does nothing.
  void Unload() override;

protected:
  /// As high as what it shows needs it, in twips.
  virtual int InnerHeight() const;

private:
  void UnloadFromLoop();

  House house_;
  bool unloading_ = false;
};

/// The alert of a contact with a photo.
class frmPopupPhoto : public frmPopup {
public:
  /// `photo` is the path of an image file.
  frmPopupPhoto(const House& house, const std::string& photo);

  PictureBox picPhoto;

  std::string_view Name() const override { return "frmPopupPhoto"; }
  void VisitControls(ControlVisitor& visitor) override;

protected:
  int InnerHeight() const override;
};

} // namespace kelmio

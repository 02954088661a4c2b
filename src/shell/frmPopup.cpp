#include "shell/frmPopup.h"

#include "platform/desktop.h"
#include "shell/mEffects.h"

namespace kelmio {

namespace {

constexpr const char* kTitle = "New Call";
constexpr int kCloseDelayMs = 8000;
constexpr int kPopupWidth = 320 * kTwipsPerPixel;
constexpr int kPopupHeight = 104 * kTwipsPerPixel;
constexpr int kPopupPhotoHeight = 132 * kTwipsPerPixel;
/// From the right and lower edges of the work area, in twips.
constexpr int kDistance = 50;

constexpr int kOpeningSpeed = 5;
constexpr int kOpeningSteps = 12;
/// What stands in for speed and steps that can't be.
constexpr int kLeastSpeed = 1;
constexpr int kUsualSteps = 30;

} // namespace

frmPopup::frmPopup(const House& house) : tmrClose(house.timers, kCloseDelayMs), house_(house) {
  imgClose.Click = [this] { UnloadFromLoop(); };
  tmrClose.Tick = [this] { UnloadFromLoop(); };
}

void frmPopup::Load() {
  Caption = kTitle;
  lblTitle.Caption = kTitle;
  Width = kPopupWidth;
  Height = InnerHeight();
  Left = house_.app.ScreenWidth - Width - kDistance;
  Top = house_.app.ScreenHeight - Height - kDistance;
  // The setting is a number of seconds and the timer takes it for milliseconds: a small one closes the alert as soon as
  // it has opened.
  tmrClose.SetInterval(house_.settings.NewCallAlertTime);
  tmrClose.SetEnabled(true);
}

void frmPopup::ShowCall(const std::string& name, const std::string& number) {
  using namespace mEffects;
  const auto held = shared_from_this(); // the window may close inside the effect
  lblName.Caption = name;
  lblNumber.Caption = number;
  Effect = kEffectCenter;
  house_.windows.Show(held, Activation::Leaves);
  ShowWindowEffect(house_.surface, house_.loop, *this, EffectMode::Opening, Effect, kOpeningSpeed, kOpeningSteps);
  if (Visible)
    SetFormTransparency(house_.surface, *this, house_.settings.Transparency);
}

int frmPopup::InnerHeight() const {
  return kPopupHeight;
}

bool frmPopup::QueryUnload() {
  UnloadFromLoop();
  return true;
}

void frmPopup::UnloadFromLoop() {
  house_.loop.Post([alert = weak_from_this()] {
    if (const auto held = alert.lock())
      held->Unload();
  });
}

void frmPopup::Unload() {
  if (unloading_)
    return;
  unloading_ = true;
  tmrClose.SetEnabled(false);
  if (EffectSpeed < 0)
    EffectSpeed = kLeastSpeed;
  if (EffectSteps < 1)
    EffectSteps = kUsualSteps;
  if (State != WindowState::Minimized)
    mEffects::ShowWindowEffect(house_.surface, house_.loop, *this, mEffects::EffectMode::Closing, Effect, EffectSpeed,
                               EffectSteps);
  Visible = false;
}

void frmPopup::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("lblTitle", lblTitle);
  visitor.Visit("lblName", lblName);
  visitor.Visit("lblNumber", lblNumber);
  visitor.Visit("imgClose", imgClose);
}

frmPopupPhoto::frmPopupPhoto(const House& house, const std::string& photo) : frmPopup(house) {
  picPhoto.Picture = photo;
}

int frmPopupPhoto::InnerHeight() const {
  return kPopupPhotoHeight;
}

void frmPopupPhoto::VisitControls(ControlVisitor& visitor) {
  frmPopup::VisitControls(visitor);
  visitor.Visit("picPhoto", picPhoto);
}

} // namespace kelmio

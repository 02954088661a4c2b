#include "shell/ToolTipOnDemand.h"

#include "shell/raise.h"

namespace kelmio {

namespace {

/// A text that isn't set. It is kept and never shown.
const std::string kEmptyString = "~eMpTyStRiNg";

TipProperties Defaults() {
  TipProperties defaults;
  defaults.Style = TipProperties::kBalloon;
  defaults.BackColor = kDesktopTipBack;
  return defaults;
}

std::string ReadText(const PropertyBag& properties, const std::string& name) {
  const std::string text = properties.ReadProperty(name, kEmptyString);
  return text == kEmptyString ? std::string() : text;
}

void WriteText(PropertyBag& properties, const std::string& name, const std::string& text) {
  properties.WriteProperty(name, text.empty() ? kEmptyString : text, kEmptyString);
}

} // namespace

ToolTipOnDemand::ToolTipOnDemand(TipWindows& tips, LocalWindows& windows, MSubclass& subclass,
                                 const PropertyBag& properties)
    : oTrayBalloon(tips, windows, subclass) {
  ReadProperties(properties);
  oTrayBalloon.MouseEvents = [this](std::uint32_t message) { oTrayBalloon_MouseEvents(message); };
  oTrayBalloon.BalloonDestroyed = [this] { oTrayBalloon_BalloonDestroyed(); };
  oTrayBalloon.BalloonShowed = [this] { oTrayBalloon_BalloonShowed(); };
}

void ToolTipOnDemand::ReadProperties(const PropertyBag& properties) {
  const TipProperties defaults = Defaults();
  TipProperties& tip = Properties();
  tip.Style = properties.ReadProperty("Style", defaults.Style);
  tip.IconType = properties.ReadProperty("IconType", defaults.IconType);
  tip.X = properties.ReadProperty("X", defaults.X);
  tip.Y = properties.ReadProperty("Y", defaults.Y);
  tip.ForeColor = properties.ReadProperty("ForeColor", defaults.ForeColor);
  tip.BackColor = properties.ReadProperty("BackColor", defaults.BackColor);
  tip.Title = ReadText(properties, "Title");
  tip.Prompt = ReadText(properties, "Prompt");
  tip.Centered = properties.ReadProperty("Centered", defaults.Centered);
  tip.TimeOut = properties.ReadProperty("TimeOut", defaults.TimeOut);
}

void ToolTipOnDemand::WriteProperties(PropertyBag& properties) const {
  const TipProperties defaults = Defaults();
  const TipProperties& tip = Properties();
  properties.WriteProperty("Style", tip.Style, defaults.Style);
  properties.WriteProperty("IconType", tip.IconType, defaults.IconType);
  properties.WriteProperty("X", tip.X, defaults.X);
  properties.WriteProperty("Y", tip.Y, defaults.Y);
  properties.WriteProperty("ForeColor", tip.ForeColor, defaults.ForeColor);
  properties.WriteProperty("BackColor", tip.BackColor, defaults.BackColor);
  WriteText(properties, "Title", tip.Title);
  WriteText(properties, "Prompt", tip.Prompt);
  properties.WriteProperty("Centered", tip.Centered, defaults.Centered);
  properties.WriteProperty("TimeOut", tip.TimeOut, defaults.TimeOut);
}

void ToolTipOnDemand::oTrayBalloon_MouseEvents(std::uint32_t message) {
  Raise(MouseEvents, message);
}

void ToolTipOnDemand::oTrayBalloon_BalloonDestroyed() {
  Raise(BalloonDestroyed);
}

void ToolTipOnDemand::oTrayBalloon_BalloonShowed() {
  Raise(BalloonShowed);
}

} // namespace kelmio

// The balloon as a control of a window.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "shell/cToolTipOnDemand.h"
#include "shell/property_bag.h"

namespace kelmio {

/// User interface thread only; what it is made of outlives it.
class ToolTipOnDemand {
public:
  ToolTipOnDemand(TipWindows& tips, LocalWindows& windows, MSubclass& subclass, const PropertyBag& properties = {});
  ToolTipOnDemand(const ToolTipOnDemand&) = delete;
  ToolTipOnDemand& operator=(const ToolTipOnDemand&) = delete;

  void ReadProperties(const PropertyBag& properties);
  void WriteProperties(PropertyBag& properties) const;

  /// The next `Show` goes by them.
  TipProperties& Properties() { return oTrayBalloon.Properties; }
  const TipProperties& Properties() const { return oTrayBalloon.Properties; }
  /// A balloon that shows moves at once.
  void SetX(int x) { oTrayBalloon.MoveTo(x, Properties().Y); }
  void SetY(int y) { oTrayBalloon.MoveTo(Properties().X, y); }

  /// A failure is the system's text for it.
  std::optional<std::string> Show() { return oTrayBalloon.Show(); }
  void Destroy() { oTrayBalloon.Destroy(); }
  bool Shown() const { return oTrayBalloon.Shown(); }

  std::function<void(std::uint32_t message)> MouseEvents = [](std::uint32_t) {};
  std::function<void()> BalloonDestroyed = [] {};
  std::function<void()> BalloonShowed = [] {};

private:
  void oTrayBalloon_MouseEvents(std::uint32_t message);
  void oTrayBalloon_BalloonDestroyed();
  void oTrayBalloon_BalloonShowed();

  cToolTipOnDemand oTrayBalloon;
};

} // namespace kelmio

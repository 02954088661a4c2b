// What the call subjects ask of the main window.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace kelmio {

/// The commands whose state follows the call.
inline constexpr int kCommandAnswer = 400;
inline constexpr int kCommandHangUp = 401;
inline constexpr int kCommandRecord = 402;

/// The status bar's panels that the call subjects write.
inline constexpr std::size_t kPanelActivity = 1;
inline constexpr std::size_t kPanelLine = 2;
inline constexpr std::size_t kPanelClock = 3;

/// User interface thread only. `RefreshMessageList` and `ShowNewCallAlert` may let pending events run, so that
/// another event's handler can run inside them.
class CallHost {
public:
  virtual ~CallHost() = default;
  virtual void SetPanel(std::size_t panel, const std::string& text) = 0;
  /// Enables or disables a command on the menu, then on the toolbar.
  virtual void EnableCommand(int command, bool enabled) = 0;
  virtual void ShowNewCallAlert(const std::string& name, const std::string& number) = 0;
  virtual void RefreshMessageList() = 0;
  /// Tells the wave view the format of the blocks that follow.
  virtual void SetWaveViewFormat(long number_b, long number_a) = 0;
  virtual void DrawWave(std::span<const std::byte> samples) = 0;
};

} // namespace kelmio

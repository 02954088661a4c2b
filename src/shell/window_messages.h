// Numbered messages and the windows that they go to.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace kelmio {

/// A window of this program that takes messages; 0 is none. It needs nothing on the screen.
using WindowHandle = std::uint32_t;
/// What a message says of itself; each message has its own meaning of the two.
using MessageWord = std::intptr_t;
using MessageResult = std::intptr_t;

/// The numbers are those of the Windows API.
namespace window_message {
inline constexpr std::uint32_t kDestroy = 2;
inline constexpr std::uint32_t kTimer = 275; // the word is the timer's number
inline constexpr std::uint32_t kMouseMove = 512;
inline constexpr std::uint32_t kLeftButtonDown = 513;
inline constexpr std::uint32_t kLeftDoubleClick = 515;
inline constexpr std::uint32_t kRightButtonDown = 516;
inline constexpr std::uint32_t kLastMouseMessage = 521; // a double click of the middle button
} // namespace window_message

/// What a window does with a message.
using WindowProcedure =
    std::function<MessageResult(WindowHandle window, std::uint32_t message, MessageWord word, MessageWord long_word)>;

struct SubclassTable;

/// The windows, as the dispatcher sees them. User interface thread only.
class MessageWindows {
public:
  virtual ~MessageWindows() = default;
  virtual bool IsWindow(WindowHandle window) const = 0;
  /// Whether the window is this program's own.
  virtual bool IsLocal(WindowHandle window) const = 0;
  /// Gives the window another procedure and returns the old one; nothing when the window doesn't let that happen.
  virtual std::optional<WindowProcedure> SetProcedure(WindowHandle window, WindowProcedure procedure) = 0;
  /// Who listens to the window. It is kept with the window and goes with it; nothing while nobody listens.
  virtual std::shared_ptr<SubclassTable> Table(WindowHandle window) const = 0;
  virtual void SetTable(WindowHandle window, std::shared_ptr<SubclassTable> table) = 0;
};

} // namespace kelmio

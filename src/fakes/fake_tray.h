// The tray and its tips in memory.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "controls/command_bars.h"
#include "platform/tip_windows.h"
#include "platform/tray.h"

namespace kelmio {

/// What was asked of it stands in `calls`: "add", "modify" with the flags, "delete".
class FakeTray : public Tray {
public:
  bool Add(const TrayRecord& new_record) override {
    calls.emplace_back("add");
    record = new_record;
    created = available;
    return created;
  }
  void Modify(unsigned flags, const TrayRecord& new_record) override {
    calls.push_back("modify " + std::to_string(flags));
    record = new_record;
  }
  void Delete() override {
    calls.emplace_back("delete");
    created = false;
  }
  bool Created() const override { return created; }
  std::optional<ScreenRect> IconRect() const override { return created ? rect : std::nullopt; }
  std::uint32_t HostWindow() const override { return 0; }
  bool ShowsBalloons() const override { return shows_balloons; }
  void ShowPopup(const CommandBar& popup) override { popups.push_back(popup); }

  bool available = true;
  bool shows_balloons = true;
  std::optional<ScreenRect> rect = ScreenRect{1200, 1000, 1222, 1022};

  bool created = false;
  TrayRecord record;
  std::vector<std::string> calls;
  std::vector<CommandBar> popups;
};

/// One tip at a time.
class FakeTipWindows : public TipWindows {
public:
  struct Tip {
    TipContent content;
    int x;
    int y;
    std::function<void(std::uint32_t message)> on_mouse;
  };

  std::unique_ptr<TipWindow> Create(const TipContent& content, int x, int y,
                                    std::function<void(std::uint32_t message)> on_mouse) override {
    if (!available)
      return nullptr;
    shown = Tip{content, x, y, std::move(on_mouse)};
    return std::make_unique<Window>(*this);
  }

  bool available = true;
  std::optional<Tip> shown;

private:
  class Window : public TipWindow {
  public:
    explicit Window(FakeTipWindows& tips) : tips_(tips) {}
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    ~Window() override { tips_.shown.reset(); }
    void MoveTo(int x, int y) override {
      tips_.shown->x = x;
      tips_.shown->y = y;
    }

  private:
    FakeTipWindows& tips_;
  };
};

} // namespace kelmio

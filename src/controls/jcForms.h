// The program's own window frame: title bar, buttons, border and system menu in a theme's colours.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "controls/error_log.h"
#include "controls/form.h"
#include "controls/frame_paint.h"
#include "platform/desktop.h"

namespace kelmio {

/// Frames the window that owns it. Places are in pixels of the window, which the view tells by `Layout`. User interface
/// thread only.
class jcForms : public Control {
public:
  /// What lies at a place. The three buttons are the caption buttons.
  enum class Part { Inside, Bar, Icon, MinButton, MaxButton, CloseButton, Right, Bottom, Corner };
  enum class Border { Fixed, Sizable };
  enum class Background { Windows, Theme, Custom };

  /// Entries of the system menu that are always there; added ones have the numbers behind them.
  enum MenuEntry { kRestore, kMinimize, kMaximize, kFirstSeparator, kClose, kSecondSeparator, kOnTop, kFixedEntries };

  struct MenuItem {
    std::string caption; // "-" for a separator
    std::string value;
    bool enabled = true;
    bool checked = false;
  };
  struct CaptionButton {
    Part part;
    FrameRect place;
  };
  struct House {
    Form& window;
    const Desktop& desktop;
    const ErrorLog& errors;
  };

  /// Theme numbers with a meaning of their own.
  static constexpr int kOwnColors = 5;
  static constexpr int kDesktopColors = 6;

  explicit jcForms(const House& house);

  Property<int> ThemeColor{*this, 0};
  Property<int> Style{*this, 0};
  Property<Background> BackColorStyle{*this, Background::Windows};
  Property<bool> MaxButton{*this, true};
  Property<bool> MinButton{*this, true};
  Property<bool> CloseButton{*this, true};
  /// The framed window's own.
  Property<kelmio::WindowState>& WindowState;
  /// Text boxes and picture boxes of the window get the background too.
  Property<bool> ChangeAllBackgrounds{*this, false};
  Property<Border> BorderStyle{*this, Border::Fixed};
  Property<Color> CustomBackColor{*this, kWhite};
  Property<Color> ColorFrom{*this, kFrameThemes[0].dark};
  Property<Color> ColorTo{*this, kFrameThemes[0].light};
  Property<int> IconSize{*this, 16};
  Property<bool> TitleBarShadow{*this, false};
  /// A window without the focus keeps its colours.
  Property<bool> SinglePair{*this, false};

  /// Takes the design over: colours, buttons, menu, backgrounds. Once they are set, and after each later change.
  void Refresh();

  // The system menu. Numbers count from 0; one that isn't an added entry's is refused with false or empty text.

  /// Adds an entry and returns its number. A click on it raises `MenuClick` with the number.
  int FormMenuAdd(const std::string& caption, const std::string& value);
  bool ModifyAddedMenu(int entry, const std::string& caption, bool enabled, bool checked);
  bool FormMenuRemove(int entry);
  std::string GetMenuItemValue(int entry) const;
  void SetjcFormsMenuCaption(const std::string& restore, const std::string& minimize, const std::string& maximize,
                             const std::string& close, const std::string& always_on_top);
  const std::vector<MenuItem>& SysMnu() const { return menu_; }
  void MnuSyst_Click(int entry);
  std::function<void(int entry)> MenuClick = [](int) {};

  void SetAlwaysOnTop(bool on_top);
  bool AlwaysOnTop() const { return on_top_; }

  // For the view.

  /// `text_height` is that of the letter "H" in the title's font.
  void Layout(int width, int height, int text_height);
  /// Height of the title bar.
  int BarHeight() const { return bar_height_; }
  /// Width of the border; a maximised window has none.
  int BorderWidth() const;
  const std::vector<CaptionButton>& CaptionButtons() const { return buttons_; }
  FrameRect IconPlace() const;
  /// Where the title stands, between icon and buttons.
  FrameRect TitlePlace() const;
  Part HitTest(int x, int y) const;
  /// The pair that is painted; `active` while the window has the focus.
  const ColorPair& Colors(bool active) const { return active ? active_ : inactive_; }
  std::vector<GradientFill> TitleBar(bool active) const;
  /// The button under the pointer, and the one that is held down; `Inside` for none.
  Part Hot() const { return hot_; }
  Part Pressed() const { return pressed_; }
  void MouseMove(int x, int y);
  void MouseLeave();
  /// What was pressed: the view drags the window by `Bar` and sizes it by the edges.
  Part MouseDown(int x, int y);
  void MouseUp(int x, int y);
  void DblClick(int x, int y);

  /// `text` cut at its end, with three points behind it, until it is no wider than `width` by `measure`.
  static std::string TrimWord(const std::string& text, int width,
                              const std::function<int(const std::string&)>& measure);

private:
  void SetThemeColor();
  ColorPair SetDefaultThemeColor(int theme) const;
  ColorPair GetGradientColor() const;
  void BackgroundSetup();
  void TitleBarHeightSetup(int text_height);
  void CaptionBtnSetup();
  void MenuSetup();
  void jcWindowState();
  void CloseWindow();
  void Press(Part part);
  bool IsAdded(int entry) const;

  House house_;
  ColorPair active_ = kFrameThemes[0];
  ColorPair inactive_ = kFrameThemes[0];
  std::vector<MenuItem> menu_;
  std::vector<CaptionButton> buttons_;
  int width_ = 0;
  int height_ = 0;
  int bar_height_ = 30;
  Part hot_ = Part::Inside;
  Part pressed_ = Part::Inside;
  bool on_top_ = false;
};

} // namespace kelmio

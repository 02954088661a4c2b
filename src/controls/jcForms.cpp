#include "controls/jcForms.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include "controls/picture_box.h"
#include "controls/ucSlider.h"
#include "controls/utf8.h"

namespace kelmio {

namespace {

/// Share of its own colour that an inactive window keeps, of 255; the rest is white.
constexpr int kInactiveWeight = 190;
/// Room above and below the title's text together, and around the icon.
constexpr int kTextRoom = 10;
constexpr int kIconRoom = 15;
/// The bar of this style is higher than the others.
constexpr int kHighStyle = 1;
constexpr int kHighStyleMore = 10;

constexpr int kButtonWidth = 28;
constexpr int kButtonHeight = 21;
constexpr int kButtonGap = 2;
constexpr int kEdge = 4;
constexpr int kMargin = 8;
/// How far along an edge the corner reaches, which sizes both ways.
constexpr int kCornerReach = 16;

constexpr const char* kSeparator = "-";
constexpr const char* kSpanish = "Spanish";
constexpr const char* kCloseKeys = "            Alt+F4"; // behind twelve blanks
constexpr const char* kModule = "jcForms";

struct MenuTexts {
  const char* restore;
  const char* minimize;
  const char* maximize;
  const char* close;
  const char* on_top;
};
constexpr MenuTexts kEnglishTexts = {"Restore", "Minimize", "Maximize", "Close", "Always on Top"};
constexpr MenuTexts kSpanishTexts = {"Restaurar", "Minimizar", "Maximizar", "Cerrar", "Siempre Visible"};

/// Recolours what has a background of its own.
class BackgroundPainter : public ControlVisitor {
public:
  explicit BackgroundPainter(Color color) : color_(color) {}

  void Visit(std::string_view /*name*/, Label& /*control*/) override {}
  void Visit(std::string_view /*name*/, Button& /*control*/) override {}
  void Visit(std::string_view /*name*/, CheckBox& /*control*/) override {}
  void Visit(std::string_view /*name*/, ComboBox& /*control*/) override {}
  void Visit(std::string_view /*name*/, ProgressBar& /*control*/) override {}
  void Visit(std::string_view /*name*/, TextBox& control) override { control.BackColor = color_; }
  void Visit(std::string_view /*name*/, ListView& /*control*/) override {}
  void Visit(std::string_view /*name*/, StatusBar& /*control*/) override {}
  void Visit(std::string_view /*name*/, CommandBars& /*control*/) override {}
  void Visit(std::string_view /*name*/, DockingPanes& /*control*/) override {}
  void Visit(std::string_view /*name*/, TabControl& /*control*/) override {}
  void Visit(std::string_view /*name*/, TreeView& /*control*/) override {}
  void Visit(std::string_view /*name*/, PictureBox& control) override { control.BackColor = color_; }
  void Visit(std::string_view /*name*/, SpectrumView& /*control*/) override {}
  void Visit(std::string_view /*name*/, ucSlider& control) override { control.BackColor = color_; }
  void Visit(std::string_view /*name*/, jcForms& /*control*/) override {}
  void Visit(std::string_view /*name*/, WebBrowser& /*control*/) override {}

private:
  Color color_;
};

} // namespace

jcForms::jcForms(const House& house) : WindowState(house.window.State), house_(house), menu_(kFixedEntries) {
  const MenuTexts& texts = house_.desktop.LanguageName() == kSpanish ? kSpanishTexts : kEnglishTexts;
  menu_[kFirstSeparator].caption = kSeparator;
  menu_[kSecondSeparator].caption = kSeparator;
  SetjcFormsMenuCaption(texts.restore, texts.minimize, texts.maximize, texts.close, texts.on_top);
  Refresh();
}

void jcForms::Refresh() {
  SetThemeColor();
  BackgroundSetup();
  CaptionBtnSetup();
  MenuSetup();
  Changed();
}

void jcForms::Layout(int width, int height, int text_height) {
  width_ = width;
  height_ = height;
  SetThemeColor();
  TitleBarHeightSetup(text_height);
  CaptionBtnSetup();
  MenuSetup();
}

void jcForms::SetThemeColor() {
  active_ = ThemeColor == kDesktopColors ? GetGradientColor() : SetDefaultThemeColor(ThemeColor);
  inactive_ = SinglePair ? active_ : Blend(active_, kWhite, kInactiveWeight);
}

ColorPair jcForms::SetDefaultThemeColor(int theme) const {
  if (theme == kOwnColors)
    return {ColorFrom, ColorTo};
  const bool known = theme >= 0 && theme < static_cast<int>(kFrameThemes.size());
  return kFrameThemes[known ? static_cast<std::size_t>(theme) : 0];
}

ColorPair jcForms::GetGradientColor() const {
  const std::optional<VisualStyle> style = house_.desktop.CurrentStyle();
  if (style && style->color_scheme == "Metallic")
    return kFrameThemes[1];
  if (style && style->color_scheme == "HomeStead")
    return kFrameThemes[2];
  return kFrameThemes[0];
}

void jcForms::BackgroundSetup() {
  if (BackColorStyle == Background::Windows)
    return;
  const Color color = BackColorStyle == Background::Theme ? active_.light : CustomBackColor.Get();
  house_.window.BackColor = color;
  if (ChangeAllBackgrounds) {
    BackgroundPainter painter(color);
    house_.window.VisitControls(painter);
  }
}

void jcForms::TitleBarHeightSetup(int text_height) {
  const int height = std::max(text_height + kTextRoom, IconSize + kIconRoom);
  bar_height_ = Style == kHighStyle ? height + kHighStyleMore : height;
}

void jcForms::CaptionBtnSetup() {
  buttons_.clear();
  int left = width_ - kMargin / 2;
  const int top = (bar_height_ - kButtonHeight) / 2;
  const auto place = [&](Part part, bool exists) {
    if (!exists)
      return;
    left -= kButtonWidth;
    buttons_.push_back({part, {left, top, kButtonWidth, kButtonHeight}});
    left -= kButtonGap;
  };
  place(Part::CloseButton, CloseButton);
  place(Part::MaxButton, MaxButton);
  place(Part::MinButton, MinButton);
}

void jcForms::MenuSetup() {
  const bool normal = WindowState == kelmio::WindowState::Normal;
  menu_[kRestore].enabled = !normal;
  menu_[kMinimize].enabled = MinButton && WindowState != kelmio::WindowState::Minimized;
  menu_[kMaximize].enabled = MaxButton && WindowState != kelmio::WindowState::Maximized;
  menu_[kClose].enabled = CloseButton;
  menu_[kOnTop].checked = on_top_;
}

int jcForms::FormMenuAdd(const std::string& caption, const std::string& value) {
  menu_.push_back({caption, value});
  return static_cast<int>(menu_.size()) - 1;
}

bool jcForms::IsAdded(int entry) const {
  return entry >= kFixedEntries && entry < static_cast<int>(menu_.size());
}

bool jcForms::ModifyAddedMenu(int entry, const std::string& caption, bool enabled, bool checked) {
  if (!IsAdded(entry))
    return false;
  MenuItem& item = menu_[static_cast<std::size_t>(entry)];
  item.caption = caption;
  item.enabled = enabled;
  item.checked = checked;
  return true;
}

bool jcForms::FormMenuRemove(int entry) {
  if (!IsAdded(entry))
    return false;
  menu_.erase(menu_.begin() + entry);
  return true;
}

std::string jcForms::GetMenuItemValue(int entry) const {
  return IsAdded(entry) ? menu_[static_cast<std::size_t>(entry)].value : std::string();
}

void jcForms::SetjcFormsMenuCaption(const std::string& restore, const std::string& minimize,
                                    const std::string& maximize, const std::string& close,
                                    const std::string& always_on_top) {
  menu_[kRestore].caption = restore;
  menu_[kMinimize].caption = minimize;
  menu_[kMaximize].caption = maximize;
  menu_[kClose].caption = close + kCloseKeys;
  menu_[kOnTop].caption = always_on_top;
}

void jcForms::MnuSyst_Click(int entry) {
  if (entry < 0 || entry >= static_cast<int>(menu_.size()))
    return;
  // What the owner does with the click must not end in the menu.
  try {
    switch (entry) {
    case kRestore:
    case kMaximize:
      jcWindowState();
      break;
    case kMinimize:
      hot_ = Part::Inside;
      Changed();
      WindowState = kelmio::WindowState::Minimized;
      break;
    case kClose:
      CloseWindow();
      break;
    case kOnTop:
      SetAlwaysOnTop(!on_top_);
      break;
    default:
      if (IsAdded(entry))
        MenuClick(entry);
    }
  } catch (const std::exception& error) {
    house_.errors.Report({0, error.what(), kModule, "MnuSyst_Click"}, false);
  }
}

void jcForms::SetAlwaysOnTop(bool on_top) {
  on_top_ = on_top;
  MenuSetup();
  Changed();
}

void jcForms::jcWindowState() {
  WindowState =
      WindowState == kelmio::WindowState::Normal ? kelmio::WindowState::Maximized : kelmio::WindowState::Normal;
}

void jcForms::CloseWindow() {
  if (house_.window.QueryUnload())
    return;
  house_.window.Unload();
  house_.window.Visible = false;
}

int jcForms::BorderWidth() const {
  return WindowState == kelmio::WindowState::Maximized ? 0 : kEdge;
}

FrameRect jcForms::IconPlace() const {
  return {kMargin, (bar_height_ - IconSize) / 2, IconSize, IconSize};
}

FrameRect jcForms::TitlePlace() const {
  const int left = kMargin + IconSize + kMargin;
  const int right = (buttons_.empty() ? width_ : buttons_.back().place.left) - kMargin;
  return {left, 0, std::max(0, right - left), bar_height_};
}

jcForms::Part jcForms::HitTest(int x, int y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_)
    return Part::Inside;
  for (const CaptionButton& button : buttons_)
    if (button.place.Contains(x, y))
      return button.part;
  if (BorderStyle == Border::Sizable && WindowState == kelmio::WindowState::Normal) {
    const bool right = x >= width_ - kEdge;
    const bool bottom = y >= height_ - kEdge;
    const bool at_corner = x >= width_ - kCornerReach && y >= height_ - kCornerReach;
    if ((right || bottom) && at_corner)
      return Part::Corner;
    if (right || bottom)
      return right ? Part::Right : Part::Bottom;
  }
  if (y >= bar_height_)
    return Part::Inside;
  return IconPlace().Contains(x, y) ? Part::Icon : Part::Bar;
}

std::vector<GradientFill> jcForms::TitleBar(bool active) const {
  return DrawTitleBar(Style, {0, 0, width_, bar_height_}, Colors(active));
}

void jcForms::MouseMove(int x, int y) {
  const Part part = HitTest(x, y);
  const bool button = part == Part::MinButton || part == Part::MaxButton || part == Part::CloseButton;
  const Part hot = button ? part : Part::Inside;
  if (hot == hot_)
    return;
  hot_ = hot;
  Changed();
}

void jcForms::MouseLeave() {
  MouseMove(-1, -1);
}

jcForms::Part jcForms::MouseDown(int x, int y) {
  const Part part = HitTest(x, y);
  MouseMove(x, y);
  Press(hot_);
  return part;
}

void jcForms::Press(Part part) {
  pressed_ = part;
  Changed();
}

void jcForms::MouseUp(int x, int y) {
  const Part pressed = pressed_;
  Press(Part::Inside);
  if (pressed == Part::Inside || HitTest(x, y) != pressed)
    return;
  if (pressed == Part::MinButton)
    MnuSyst_Click(kMinimize);
  else if (pressed == Part::MaxButton)
    MnuSyst_Click(kMaximize);
  else
    MnuSyst_Click(kClose);
}

void jcForms::DblClick(int x, int y) {
  const Part part = HitTest(x, y);
  if (part == Part::Bar && MaxButton)
    MnuSyst_Click(kMaximize);
  else if (part == Part::Icon && CloseButton)
    MnuSyst_Click(kClose);
}

std::string jcForms::TrimWord(const std::string& text, int width,
                              const std::function<int(const std::string&)>& measure) {
  if (measure(text) <= width)
    return text;
  constexpr const char* kCut = "...";
  std::string kept = text;
  while (!kept.empty()) {
    RemoveLastCharacter(kept);
    if (measure(kept + kCut) <= width)
      return kept + kCut;
  }
  return {};
}

} // namespace kelmio

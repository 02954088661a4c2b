#include "controls/jcForms.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <stdexcept>

#include "fakes/fake_desktop.h"
#include "fakes/fake_loop.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Part = jcForms::Part;

constexpr int kSmallText = 12; // the icon decides the height

struct Window : Form {
  TextBox txtText;
  bool stays = false;
  int unloads = 0;
  void VisitControls(ControlVisitor& visitor) override { visitor.Visit("txtText", txtText); }
  bool QueryUnload() override { return stays; }
  void Unload() override { ++unloads; }
};

struct FrameRules : testing::Test {
  Window window;
  FakeDesktop desktop;
  FakeLoop loop;
  FakeMessageBoxes boxes;
  test::TemporaryFolder home;
  ErrorLog errors{{loop, boxes, home.Path(), "Kelmio Standard", "7.8.9"}};
  jcForms frame{{window, desktop, errors}};

  FrameRules() { LayOut(); }
  void LayOut() { frame.Layout(400, 300, kSmallText); }
  void Click(Part part) {
    const auto buttons = frame.CaptionButtons();
    for (const auto& button : buttons)
      if (button.part == part) {
        frame.MouseDown(button.place.left + 3, button.place.top + 3);
        frame.MouseUp(button.place.left + 3, button.place.top + 3);
      }
  }
  std::string MenuStates() {
    LayOut();
    std::string states;
    for (const auto& item : frame.SysMnu())
      states += item.caption == "-" ? '-' : item.enabled ? 'e' : 'd';
    return states;
  }
};

TEST_F(FrameRules, ColoursComeFromTheThemeAndFadeWithoutTheFocus) {
  frame.ThemeColor = 1;
  frame.Refresh();
  EXPECT_EQ(frame.Colors(true), (ColorPair{RgbColor(95, 95, 111), RgbColor(244, 244, 251)}));
  // 95 * 190 + 255 * 65 = 34625, of 255: 135
  EXPECT_EQ(frame.Colors(false).dark, RgbColor(135, 135, 147));
  frame.SinglePair = true;
  frame.ThemeColor = jcForms::kOwnColors;
  frame.ColorFrom = 0x123456;
  frame.ColorTo = 0x654321;
  frame.Refresh();
  EXPECT_EQ(frame.Colors(true), (ColorPair{0x123456, 0x654321}));
  EXPECT_EQ(frame.Colors(false), frame.Colors(true));

  frame.ThemeColor = jcForms::kDesktopColors;
  const std::pair<const char*, std::size_t> schemes[] = {
      {"NormalColor", 0}, {"Metallic", 1}, {"HomeStead", 2}, {"Classic", 0}, {"metallic", 0}};
  for (const auto& [scheme, theme] : schemes) {
    desktop.style = VisualStyle{"some.msstyles", scheme};
    frame.Refresh();
    EXPECT_EQ(frame.Colors(true), kFrameThemes[theme]) << scheme;
  }
  desktop.style.reset();
  frame.Refresh();
  EXPECT_EQ(frame.Colors(true), kFrameThemes[0]);
}

TEST_F(FrameRules, TheBackgroundIsTheThemesOrAnOwnOneForTheWindowOrAllOfIt) {
  frame.BackColorStyle = jcForms::Background::Custom;
  frame.CustomBackColor = 0x102030;
  frame.Refresh();
  EXPECT_EQ(window.BackColor, 0x102030);
  EXPECT_EQ(window.txtText.BackColor, kWhite);
  frame.BackColorStyle = jcForms::Background::Theme;
  frame.ChangeAllBackgrounds = true;
  frame.Refresh();
  EXPECT_EQ(window.BackColor, kFrameThemes[0].light);
  EXPECT_EQ(window.txtText.BackColor, kFrameThemes[0].light);
}

TEST_F(FrameRules, HeightFollowsTextIconAndStyle) {
  struct Case {
    int text, icon, style, height;
  };
  for (const Case& each : {Case{12, 16, 0, 31}, Case{12, 16, 1, 41}, Case{30, 16, 0, 40}, Case{21, 16, 5, 31},
                           Case{22, 16, 3, 32}, Case{12, 32, 1, 57}}) {
    frame.IconSize = each.icon;
    frame.Style = each.style;
    frame.Layout(400, 300, each.text);
    EXPECT_EQ(frame.BarHeight(), each.height) << each.text << " " << each.icon << " " << each.style;
  }
}

TEST_F(FrameRules, SixStylesDifferAndTheirTitleReadsInEveryTheme) {
  constexpr double kReadable = 4.5;
  for (std::size_t theme = 0; theme < kFrameThemes.size(); ++theme) {
    std::vector<std::vector<GradientFill>> seen;
    for (int style = 0; style < 6; ++style) {
      frame.ThemeColor = static_cast<int>(theme);
      frame.Style = style;
      LayOut();
      for (const bool active : {true, false}) {
        const auto fills = frame.TitleBar(active);
        ASSERT_LE(fills.size(), 2U);
        // Together the gradients fill the bar, and a short title, as wide as "About Kelmio", reads on them.
        int area = 0;
        for (const GradientFill& fill : fills)
          area += fill.place.width * fill.place.height;
        EXPECT_EQ(area, 400 * frame.BarHeight());
        FrameRect title = frame.TitlePlace();
        title = {style == 4 ? 150 : title.left, frame.BarHeight() / 2 - 7, 100, 14};
        const Color text = TextColorOn(fills, title);
        for (const int x : {0, 50, 99})
          for (const int y : {0, 13})
            EXPECT_GE(ColorContrast(text, ColorAt(fills, title.left + x, title.top + y)), kReadable)
                << "theme " << theme << " style " << style << " at " << x << "," << y;
      }
      EXPECT_THAT(seen, testing::Not(testing::Contains(frame.TitleBar(true)))) << style;
      seen.push_back(frame.TitleBar(true));
    }
  }
}

TEST_F(FrameRules, PlacesAreButtonsIconEdgesAndBar) {
  frame.BorderStyle = jcForms::Border::Sizable;
  LayOut();
  struct Case {
    int x, y;
    Part part;
  };
  const Case cases[] = {{200, 5, Part::Bar},        {10, 15, Part::Icon},       {385, 15, Part::CloseButton},
                        {355, 15, Part::MaxButton}, {325, 15, Part::MinButton}, {398, 150, Part::Right},
                        {200, 298, Part::Bottom},   {398, 290, Part::Corner},   {390, 298, Part::Corner},
                        {200, 150, Part::Inside},   {-1, 5, Part::Inside},      {200, 300, Part::Inside}};
  for (const Case& each : cases)
    EXPECT_EQ(frame.HitTest(each.x, each.y), each.part) << each.x << "," << each.y;
  frame.WindowState = WindowState::Maximized;
  EXPECT_EQ(frame.HitTest(398, 150), Part::Inside) << "a maximised window isn't sized";
  EXPECT_EQ(frame.BorderWidth(), 0);
}

TEST_F(FrameRules, AButtonIsHotUnderThePointerAndWorksWhereItIsReleased) {
  frame.MouseMove(385, 15);
  EXPECT_EQ(frame.Hot(), Part::CloseButton);
  frame.MouseLeave();
  EXPECT_EQ(frame.Hot(), Part::Inside);
  window.Visible = true;
  frame.MouseDown(385, 15);
  EXPECT_EQ(frame.Pressed(), Part::CloseButton);
  frame.MouseUp(200, 150);
  EXPECT_TRUE(window.Visible) << "dragged off the button";
  window.stays = true;
  Click(Part::CloseButton);
  EXPECT_TRUE(window.Visible) << "the window refused";
  window.stays = false;
  Click(Part::CloseButton);
  EXPECT_FALSE(window.Visible);
  EXPECT_EQ(window.unloads, 1);

  Click(Part::MaxButton);
  EXPECT_EQ(window.State, WindowState::Maximized);
  frame.DblClick(200, 5);
  EXPECT_EQ(window.State, WindowState::Normal);
  Click(Part::MinButton);
  EXPECT_EQ(window.State, WindowState::Minimized);
}

TEST_F(FrameRules, TheMenuSpeaksTheUsersLanguageAndFollowsTheButtons) {
  const auto texts = [](const jcForms& one) {
    std::string all;
    for (const auto& item : one.SysMnu())
      all += item.caption + "|";
    return all;
  };
  EXPECT_EQ(texts(frame), "Restore|Minimize|Maximize|-|Close            Alt+F4|-|Always on Top|");
  desktop.language = "Spanish";
  EXPECT_EQ(texts(jcForms({window, desktop, errors})),
            "Restaurar|Minimizar|Maximizar|-|Cerrar            Alt+F4|-|Siempre Visible|");

  EXPECT_EQ(MenuStates(), "dee-e-e");
  frame.MnuSyst_Click(jcForms::kMaximize);
  EXPECT_EQ(MenuStates(), "eed-e-e");
  frame.MnuSyst_Click(jcForms::kRestore);
  EXPECT_EQ(window.State, WindowState::Normal);
  frame.MaxButton = false;
  frame.MinButton = false;
  frame.CloseButton = false;
  EXPECT_EQ(MenuStates(), "ddd-d-e");
  EXPECT_TRUE(frame.CaptionButtons().empty());
  frame.MnuSyst_Click(jcForms::kOnTop);
  EXPECT_TRUE(frame.AlwaysOnTop());
  EXPECT_TRUE(frame.SysMnu()[jcForms::kOnTop].checked);
}

TEST_F(FrameRules, EntriesOfOnesOwnAreAddedChangedReadAndRemoved) {
  const int separator = frame.FormMenuAdd("-", "");
  const int added = frame.FormMenuAdd("Print", "print-it");
  EXPECT_EQ(added, separator + 1);
  EXPECT_EQ(frame.GetMenuItemValue(added), "print-it");
  EXPECT_TRUE(frame.ModifyAddedMenu(added, "Print all", false, true));
  EXPECT_EQ(frame.SysMnu().back().caption, "Print all");
  EXPECT_FALSE(frame.SysMnu().back().enabled);
  std::vector<int> clicked;
  frame.MenuClick = [&](int entry) { clicked.push_back(entry); };
  frame.MnuSyst_Click(added);
  EXPECT_THAT(clicked, ElementsAre(added));
  EXPECT_TRUE(frame.FormMenuRemove(separator));
  EXPECT_EQ(frame.GetMenuItemValue(separator), "print-it");
  for (const int other : {-1, static_cast<int>(jcForms::kClose), 99}) {
    EXPECT_FALSE(frame.ModifyAddedMenu(other, "x", true, true)) << other;
    EXPECT_FALSE(frame.FormMenuRemove(other)) << other;
    EXPECT_EQ(frame.GetMenuItemValue(other), "") << other;
  }
}

TEST_F(FrameRules, AFailureIsALineInTheFileAndABoxWhenAsked) {
  setenv("username", "jane", 1);
  setenv("computername", "desk", 1);
  frame.MenuClick = [](int) { throw std::runtime_error("no\nluck"); };
  frame.MnuSyst_Click(frame.FormMenuAdd("Fail", ""));
  errors.Report({5, "bad", "jcForms", "Paint"}, true);
  const std::string log = test::BytesOf(home.Path() + "ErrorLog.txt");
  EXPECT_THAT(log, testing::MatchesRegex("[0-9: -]+\tjane\tdesk\t7.8.9\t0\tno luck\tjcForms\tMnuSyst_Click\n"
                                         "[0-9: -]+\tjane\tdesk\t7.8.9\t5\tbad\tjcForms\tPaint\n"));
  ASSERT_EQ(boxes.shown.size(), 1U);
  EXPECT_EQ(boxes.shown[0].title, "Kelmio Standard - ERROR");
  EXPECT_EQ(boxes.shown[0].text, "Error occured: 5\nDescription: bad\nModule: jcForms\nFunction: Paint");
  EXPECT_EQ(boxes.shown[0].icon, BoxIcon::Stop);
  unsetenv("username");
  unsetenv("computername");
}

TEST(TrimWord, CutsWholeCharactersAndNothingThatFits) {
  const auto measure = [](const std::string& text) { return static_cast<int>(text.size()); };
  EXPECT_EQ(jcForms::TrimWord("Kelmio", 6, measure), "Kelmio");
  EXPECT_EQ(jcForms::TrimWord("Kelmio Help", 8, measure), "Kelmi...");
  EXPECT_EQ(jcForms::TrimWord("K\xC3\xB6ln am Rhein", 5, measure), "K...");
  EXPECT_EQ(jcForms::TrimWord("Kelmio", 2, measure), "");
}

} // namespace
} // namespace kelmio

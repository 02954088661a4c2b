#include "qt/qt_appearance.h"

#include <gmock/gmock.h>

#include <set>

#include "qt/colors.h"
#include "qt/look.h"
#include "test_form.h"

namespace kelmio {
namespace {

constexpr double kReadable = 4.5;

TEST(ThemeTest, TextReadsOnEveryGroundOfEveryTheme) {
  for (const Scheme scheme : {Scheme::Light, Scheme::Dark})
    for (const int theme : {kFlatTheme, kHighlightTheme, kGradientTheme, kSoftTheme})
      for (const int variant : {kBlueVariant, kOliveVariant, kSilverVariant}) {
        const Tones& tones = TonesOf(theme, variant, scheme);
        SCOPED_TRACE(testing::Message() << "theme " << theme << ", variant " << variant << ", "
                                        << (scheme == Scheme::Dark ? "dark" : "light"));
        for (const QRgb ground : {tones.window, tones.base, tones.row, tones.button, tones.bar_top, tones.bar_bottom,
                                  tones.hot_top, tones.hot_bottom})
          EXPECT_GE(Contrast(tones.text, ground), kReadable) << QColor(ground).name().toStdString();
        for (const QRgb ground : {tones.window, tones.base, tones.row})
          EXPECT_GE(Contrast(tones.link, ground), kReadable) << "link on " << QColor(ground).name().toStdString();
        EXPECT_GE(Contrast(tones.on_accent, tones.accent), kReadable) << "selection";
        EXPECT_GE(Contrast(tones.head_text, tones.head_top), kReadable) << "heading";
        EXPECT_GE(Contrast(tones.head_text, tones.head_bottom), kReadable) << "heading";
      }
}

TEST(ThemeTest, ARowsOwnColourStaysItselfWhereItReadsAndIsMadeReadableElsewhere) {
  constexpr Color kNavy = 0x800000; // red stands lowest
  QPalette palette;
  palette.setColor(QPalette::Base, Qt::white);
  EXPECT_EQ(TextColor(kNavy, palette), QColor(0, 0, 0x80));
  for (const QRgb ground : {0xff181d26U, 0xff000080U, 0xff777777U}) {
    palette.setColor(QPalette::Base, ground);
    EXPECT_GE(Contrast(TextColor(kNavy, palette), ground), 3.5) << QColor(ground).name().toStdString();
  }
}

TEST(QtAppearanceTest, EachThemeHasALookOfItsOwnAndUnknownOnesAreTheDefault) {
  auto& application = *static_cast<QApplication*>(QCoreApplication::instance());
  std::set<QString> looks;
  const auto look = [&] {
    EXPECT_FALSE(application.styleSheet().contains('@')) << "a colour's name that no theme fills";
    const QPalette palette = QApplication::palette();
    looks.insert(application.styleSheet() + palette.color(QPalette::Window).name() +
                 palette.color(QPalette::Highlight).name());
  };
  {
    QtAppearance appearance(application);
    for (const int theme : {0, 1, 2, 3, 4, 99}) {
      appearance.SetVisualTheme(theme);
      EXPECT_EQ(appearance.VisualTheme(), theme == 99 ? kGradientTheme : theme);
      look();
    }
    for (const int variant : {kOliveVariant, kSilverVariant, 6}) { // the last one: automatic
      appearance.SetSystemTheme(variant);
      look();
    }
    EXPECT_EQ(looks.size(), 7U);
  }
  ApplyLook(application, TonesOf(kGradientTheme, kBlueVariant, Scheme::Light));
}

} // namespace
} // namespace kelmio

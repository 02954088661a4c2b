#include "qt/qt_appearance.h"

#include <QStyle>

#include "qt/look.h"

namespace kelmio {

QtAppearance::QtAppearance(QApplication& application)
    : application_(application), scheme_(DesktopScheme(application)), desktop_style_(QApplication::style()->name()) {
  Apply();
}

void QtAppearance::SetVisualTheme(int theme) {
  const int known = theme >= kFlatTheme && theme <= kSoftTheme ? theme : kGradientTheme;
  if (known == theme_) // a look costs a new layout of every window
    return;
  theme_ = known;
  Apply();
}

void QtAppearance::SetSystemTheme(int theme) {
  const int known = theme == kOliveVariant || theme == kSilverVariant ? theme : kBlueVariant;
  if (known == variant_)
    return;
  variant_ = known;
  if (theme_ == kGradientTheme)
    Apply();
}

void QtAppearance::Apply() {
  if (theme_ == kDesktopTheme)
    ApplyDesktopLook(application_, desktop_style_);
  else
    ApplyLook(application_, TonesOf(theme_, variant_, scheme_));
}

} // namespace kelmio

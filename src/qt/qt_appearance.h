// The visual themes.
#pragma once

#include <QApplication>

#include "platform/dialogs.h"
#include "qt/theme_tones.h"

namespace kelmio {

/// Made before any other look is applied: it keeps what the desktop asks for, its light or dark scheme included,
/// which every theme follows. The colours of windows that exist change with it.
class QtAppearance : public Appearance {
public:
  explicit QtAppearance(QApplication& application);

  void SetVisualTheme(int theme) override;
  int VisualTheme() const override { return theme_; }
  void SetSystemTheme(int theme) override;

private:
  void Apply();

  QApplication& application_;
  Scheme scheme_;
  QString desktop_style_;
  int theme_ = kGradientTheme;
  int variant_ = kBlueVariant;
};

} // namespace kelmio

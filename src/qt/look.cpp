#include "qt/look.h"

#include <QFile>
#include <QPalette>
#include <QStyleFactory>

// Outside the namespace, as the resource compiler wants it.
static void LoadStyleSheet() {
  Q_INIT_RESOURCE(desktop);
}

namespace kelmio {

namespace {

/// The few colours that all others come from.
struct Tones {
  QRgb window, base, row, text, faint, line, button, accent, on_accent, link;
};

constexpr Tones kLight = {0xfff3f4f6, 0xffffffff, 0xfff7f8fa, 0xff1f2430, 0xff8b92a0,
                          0xffd5d9e0, 0xfffbfcfd, 0xff2f6fb5, 0xffffffff, 0xff1f62ad};
constexpr Tones kDark = {0xff24272d, 0xff1b1d22, 0xff202329, 0xffe4e7ec, 0xff7d8592,
                         0xff3b404a, 0xff2e323a, 0xff3a76b8, 0xffffffff, 0xff7db4ee};

/// A window whose background is below this lightness (of 255) is a dark one.
constexpr int kDarkBelow = 128;

QPalette MakePalette(const Tones& tones) {
  QPalette palette;
  palette.setColor(QPalette::Window, tones.window);
  palette.setColor(QPalette::WindowText, tones.text);
  palette.setColor(QPalette::Base, tones.base);
  palette.setColor(QPalette::AlternateBase, tones.row);
  palette.setColor(QPalette::Text, tones.text);
  palette.setColor(QPalette::PlaceholderText, tones.faint);
  palette.setColor(QPalette::Button, tones.button);
  palette.setColor(QPalette::ButtonText, tones.text);
  palette.setColor(QPalette::BrightText, Qt::white);
  palette.setColor(QPalette::ToolTipBase, tones.base);
  palette.setColor(QPalette::ToolTipText, tones.text);
  palette.setColor(QPalette::Light, tones.base);
  palette.setColor(QPalette::Midlight, tones.row);
  palette.setColor(QPalette::Mid, tones.line);
  palette.setColor(QPalette::Dark, tones.faint);
  palette.setColor(QPalette::Shadow, QColor(tones.window).darker());
  palette.setColor(QPalette::Highlight, tones.accent);
  palette.setColor(QPalette::HighlightedText, tones.on_accent);
  palette.setColor(QPalette::Link, tones.link);
  palette.setColor(QPalette::LinkVisited, tones.link);
  for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, tones.faint);
  return palette;
}

} // namespace

Scheme DesktopScheme(const QApplication& /*application*/) {
  return QApplication::palette().color(QPalette::Window).lightness() < kDarkBelow ? Scheme::Dark : Scheme::Light;
}

void ApplyLook(QApplication& application, Scheme scheme) {
  LoadStyleSheet();
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  QApplication::setPalette(MakePalette(scheme == Scheme::Dark ? kDark : kLight));
  QFile sheet(QStringLiteral(":/look.qss"));
  if (sheet.open(QIODevice::ReadOnly))
    application.setStyleSheet(QString::fromUtf8(sheet.readAll()));
}

} // namespace kelmio

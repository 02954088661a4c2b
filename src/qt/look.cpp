#include "qt/look.h"

#include <QFile>
#include <QPalette>
#include <QStyleFactory>

#include <utility>

#include "qt/command_icons.h"

namespace kelmio {

namespace {

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

QString ReadSheet(const QString& name) {
  LoadIcons(); // the sheets are kept beside them
  QFile sheet(name);
  return sheet.open(QIODevice::ReadOnly) ? QString::fromUtf8(sheet.readAll()) : QString();
}

/// The sheet that is drawn with the theme's colours: their names stand in it, with an @ before them.
QString ThemeSheet(const Tones& tones) {
  QString sheet = ReadSheet(QStringLiteral(":/theme.qss"));
  const std::pair<const char*, QRgb> colors[] = {
      {"@bar_top", tones.bar_top},   {"@bar_bottom", tones.bar_bottom},   {"@bar_line", tones.bar_line},
      {"@hot_top", tones.hot_top},   {"@hot_bottom", tones.hot_bottom},   {"@hot_line", tones.hot_line},
      {"@head_top", tones.head_top}, {"@head_bottom", tones.head_bottom}, {"@head_text", tones.head_text}};
  for (const auto& [name, color] : colors)
    sheet.replace(QLatin1String(name), QColor(color).name());
  return sheet.replace(QLatin1String("@radius"), QStringLiteral("%1px").arg(tones.radius));
}

} // namespace

Scheme DesktopScheme(const QApplication& /*application*/) {
  return QApplication::palette().color(QPalette::Window).lightness() < kDarkBelow ? Scheme::Dark : Scheme::Light;
}

void ApplyLook(QApplication& application, const Tones& tones) {
  application.setStyleSheet(QString()); // widgets that the old sheet coloured would keep some of its palette
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  QApplication::setPalette(MakePalette(tones));
  application.setStyleSheet(ReadSheet(QStringLiteral(":/look.qss")) + ThemeSheet(tones));
}

void ApplyDesktopLook(QApplication& application, const QString& style) {
  application.setStyleSheet(QString());
  QApplication::setStyle(QStyleFactory::create(style));
  QApplication::setPalette(QPalette());
  application.setStyleSheet(ReadSheet(QStringLiteral(":/look.qss")));
}

} // namespace kelmio

#include "qt/qt_desktop.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLocale>
#include <QMimeData>
#include <QScreen>

#include "qt/units.h"

namespace kelmio {

namespace {

QSize WorkArea() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen != nullptr ? screen->availableGeometry().size() : QSize(0, 0);
}

} // namespace

int QtDesktop::WorkAreaWidth() const {
  return ToTwips(WorkArea().width());
}

int QtDesktop::WorkAreaHeight() const {
  return ToTwips(WorkArea().height());
}

std::string QtDesktop::LanguageName() const {
  return QLocale::languageToString(QLocale::system().language()).toStdString();
}

void QtClipboard::Clear() {
  QGuiApplication::clipboard()->clear();
}

void QtClipboard::SetText(const std::string& text) {
  QGuiApplication::clipboard()->setText(ToText(text));
}

std::optional<std::string> QtClipboard::Text() const {
  const QMimeData* held = QGuiApplication::clipboard()->mimeData();
  return held != nullptr && held->hasText() ? std::optional(held->text().toStdString()) : std::nullopt;
}

} // namespace kelmio

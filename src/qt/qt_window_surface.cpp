#include "qt/qt_window_surface.h"

#include <QGuiApplication>
#include <QPalette>
#include <QScreen>
#include <QWidget>

#include "qt/caption_flight.h"
#include "qt/click_through.h"
#include "qt/form_binding.h"

namespace kelmio {

namespace {

constexpr double kOpaque = 255;

/// The window, where something can be done to it.
QWidget* SurfaceOf(const Form& form) {
  QWidget* widget = PlacesWindows() ? WindowOf(form) : nullptr;
  return widget != nullptr && widget->isWindow() ? widget : nullptr;
}

QRect ToQRect(const PixelRect& rect) {
  return {rect.left, rect.top, rect.Width(), rect.Height()};
}

} // namespace

std::optional<PixelRect> QtWindowSurface::Frame(const Form& form) {
  QWidget* window = SurfaceOf(form);
  if (window == nullptr)
    return std::nullopt;
  ShowFormNow(*window);
  const QRect frame = window->frameGeometry();
  return PixelRect{frame.left(), frame.top(), frame.right() + 1, frame.bottom() + 1};
}

PixelSize QtWindowSurface::ScreenSize() const {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen != nullptr ? PixelSize{screen->size().width(), screen->size().height()} : PixelSize{};
}

bool QtWindowSurface::SetRegion(const Form& form, const PixelRect& region) {
  QWidget* window = SurfaceOf(form);
  if (window == nullptr)
    return false;
  // For the toolkit an empty mask is none at all; one outside of the window leaves nothing of it.
  const QRect shown = ToQRect(region);
  window->setMask(shown.isEmpty() ? QRect(-1, -1, 1, 1) : shown);
  return true;
}

bool QtWindowSurface::MakeLayered(const Form& form, int alpha) {
  QWidget* window = SurfaceOf(form);
  if (window == nullptr)
    return false;
  window->setWindowOpacity(alpha / kOpaque);
  return LetClicksThrough(*window);
}

bool QtWindowSurface::DrawFlight(const PixelRect& from, const PixelRect& to) {
  return DrawCaptionFlight(ToQRect(from), ToQRect(to), QGuiApplication::palette().color(QPalette::Highlight).rgb());
}

} // namespace kelmio

#include "qt/form_binding.h"

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

#include "qt/colors.h"
#include "qt/units.h"

namespace kelmio {

namespace {

/// How much of the title must be on a screen for the user to get hold of it, in pixels.
constexpr int kTitleWidth = 60;
constexpr int kTitleHeight = 16;
/// A window manager tells the new size before it tells that the window is maximised.
constexpr int kSettleMs = 150;

bool IsNormal(const QWidget& window) {
  return (window.windowState() & ~Qt::WindowActive) == Qt::WindowNoState;
}

std::vector<QRect> WorkAreas() {
  std::vector<QRect> areas;
  const QScreen* main = QGuiApplication::primaryScreen();
  if (main != nullptr)
    areas.push_back(main->availableGeometry());
  for (const QScreen* screen : QGuiApplication::screens())
    if (screen != main)
      areas.push_back(screen->availableGeometry());
  return areas;
}

/// Under this name a window bears the address of its form.
constexpr const char* kFormProperty = "kelmio_form";

int Distance(const QRect& area, const QPoint& point) {
  const QPoint inside(std::clamp(point.x(), area.left(), area.right()),
                      std::clamp(point.y(), area.top(), area.bottom()));
  return (inside - point).manhattanLength();
}

} // namespace

bool PlacesWindows() {
  return !QGuiApplication::platformName().startsWith("wayland"); // there, only the desktop knows and decides
}

QWidget* WindowOf(const Form& form) {
  for (QWidget* widget : QApplication::allWidgets())
    if (widget->property(kFormProperty).value<quintptr>() == reinterpret_cast<quintptr>(&form))
      return widget;
  return nullptr;
}

void ShowFormNow(QWidget& window) {
  for (QObject* child : window.children())
    if (auto* binding = dynamic_cast<FormBinding*>(child))
      binding->show_form();
}

QRect OnScreen(const QRect& wanted, const std::vector<QRect>& areas) {
  const QRect title(wanted.topLeft(), QSize(wanted.width(), kTitleHeight));
  for (const QRect& area : areas) {
    const QRect seen = title.intersected(area);
    if (seen.width() >= std::min(kTitleWidth, wanted.width()) && seen.height() == kTitleHeight)
      return wanted;
  }
  const auto nearest = std::min_element(areas.begin(), areas.end(), [&](const QRect& one, const QRect& other) {
    return Distance(one, wanted.center()) < Distance(other, wanted.center());
  });
  if (nearest == areas.end())
    return wanted;
  const QSize size = wanted.size().boundedTo(nearest->size());
  return {std::clamp(wanted.x(), nearest->left(), nearest->right() + 1 - size.width()),
          std::clamp(wanted.y(), nearest->top(), nearest->bottom() + 1 - size.height()), size.width(), size.height()};
}

FormBinding::FormBinding(QWidget& window, Form& form) : ControlBinding(form, window), window_(window), form_(form) {
  window.setProperty(kFormProperty, QVariant::fromValue(reinterpret_cast<quintptr>(&form)));
  settle_.setSingleShot(true);
  settle_.setInterval(kSettleMs);
  connect(&settle_, &QTimer::timeout, this, [this] { TakePlace(); });
  window.installEventFilter(this);
  form.SetFocusTaker([&window] {
    window.raise();
    window.activateWindow();
  });
}

void FormBinding::Show() {
  SetBackColor(window_, form_.BackColor);
  if (form_.Busy)
    window_.setCursor(Qt::WaitCursor);
  else
    window_.unsetCursor();
  if (!window_.isWindow()) {
    window_.setBackgroundRole(QPalette::Base);
    window_.setForegroundRole(QPalette::Text);
    window_.setAutoFillBackground(true);
    return;
  }
  window_.setWindowTitle(ToText(form_.Caption.Get()));
  ShowPlace();
  ShowState();
}

// Only a place that the form has changed: the user may be moving the window while its caption changes.
void FormBinding::ShowPlace() {
  const QRect wanted(ToPixels(form_.Left), ToPixels(form_.Top), ToPixels(form_.Width), ToPixels(form_.Height));
  if (wanted.isEmpty() || wanted == known_ || !IsNormal(window_))
    return; // an empty place stands for the layout's own size
  known_ = wanted;
  const QRect place = OnScreen(wanted, WorkAreas());
  window_.resize(place.size());
  if (PlacesWindows())
    window_.move(place.topLeft());
}

void FormBinding::ShowState() {
  const bool minimized = form_.State == WindowState::Minimized;
  const bool maximized = form_.State == WindowState::Maximized;
  Qt::WindowStates state = window_.windowState();
  state.setFlag(Qt::WindowMinimized, minimized);
  if (!minimized) // a minimised window remembers that it was maximised
    state.setFlag(Qt::WindowMaximized, maximized);
  if (state != window_.windowState())
    window_.setWindowState(state);
  if (window_.isVisible() == form_.Visible)
    return;
  window_.setVisible(form_.Visible);
  if (form_.Visible && !minimized) {
    window_.raise();
    if (!window_.testAttribute(Qt::WA_ShowWithoutActivating))
      window_.activateWindow();
  }
}

bool FormBinding::eventFilter(QObject* watched, QEvent* event) {
  if (watched == &window_ && event->type() == QEvent::ParentChange)
    RequestShow(); // a window that has become a pane
  if (watched == &window_ && window_.isWindow())
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
      if (!Showing() && window_.isVisible())
        settle_.start();
      break;
    case QEvent::WindowStateChange:
      TakeState();
      break;
    case QEvent::Show:
    case QEvent::Hide:
      if (!event->spontaneous())
        Write([this] { form_.Visible = !window_.isHidden(); });
      break;
    case QEvent::Close:
      event->setAccepted(AskToClose());
      return true;
    default:
      break;
    }
  return ControlBinding::eventFilter(watched, event);
}

// Pixels that are the same leave the form's twips alone: a stored place doesn't drift from run to run.
void FormBinding::TakePlace() {
  settle_.stop();
  if (!IsNormal(window_) || !window_.isVisible())
    return;
  Write([this] {
    const auto take = [](Property<int>& property, int pixels) {
      if (ToPixels(property) != pixels)
        property = ToTwips(pixels);
    };
    if (PlacesWindows()) {
      take(form_.Left, window_.pos().x());
      take(form_.Top, window_.pos().y());
    }
    take(form_.Width, window_.width());
    take(form_.Height, window_.height());
    known_ = QRect(ToPixels(form_.Left), ToPixels(form_.Top), ToPixels(form_.Width), ToPixels(form_.Height));
  });
}

void FormBinding::TakeState() {
  Write([this] {
    if (window_.isMinimized())
      form_.State = WindowState::Minimized;
    else
      form_.State = window_.isMaximized() ? WindowState::Maximized : WindowState::Normal;
  });
}

bool FormBinding::AskToClose() {
  if (settle_.isActive())
    TakePlace();
  bool stays = false;
  RunHandler([&] { stays = form_.QueryUnload(); });
  if (!stays)
    RunHandler([&] { form_.Unload(); });
  return !stays;
}

} // namespace kelmio

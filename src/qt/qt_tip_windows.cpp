#include "qt/qt_tip_windows.h"

#include <QApplication>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QScreen>
#include <QStyle>
#include <QToolTip>
#include <QWidget>

#include <algorithm>
#include <utility>

#include "qt/balloon_place.h"
#include "qt/handler_guard.h"
#include "qt/units.h"
#include "qt/x11_selection.h"

namespace kelmio {

namespace {

// Messages of the Windows API: for each button pressed, released, pressed twice.
constexpr std::uint32_t kMouseMove = 512;
constexpr std::uint32_t kLeftButton = 513;
constexpr std::uint32_t kRightButton = 516;
constexpr std::uint32_t kMiddleButton = 519;
constexpr std::uint32_t kReleased = 1;
constexpr std::uint32_t kDoubleClick = 2;

constexpr int kBalloonRadius = 9;
constexpr int kPlainRadius = 3;
constexpr int kSidePadding = 16;
constexpr int kEdgePadding = 11;
constexpr int kHeadingGap = 6;
constexpr int kIconGap = 8;
constexpr int kIconSize = 16;
constexpr int kWidestText = 320;

/// How much lighter the top is than the ground, and how much the edge takes of the text's colour.
constexpr int kGlow = 112;
constexpr double kEdgeTint = 0.45;

QColor Mixed(const QColor& one, const QColor& other, double share) {
  const auto mix = [share](float a, float b) { return static_cast<float>(a * (1 - share) + b * share); };
  return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                          mix(one.blueF(), other.blueF()));
}

QColor ColorOf(Color color) {
  if ((static_cast<std::uint32_t>(color) & kDesktopColorBit) == 0)
    return ToColor(color);
  return QToolTip::palette().color(color == kDesktopTipText ? QPalette::ToolTipText : QPalette::ToolTipBase);
}

QPixmap IconOf(int icon, const QWidget& widget) {
  constexpr std::pair<int, QStyle::StandardPixmap> kIcons[] = {
      {1, QStyle::SP_MessageBoxInformation}, {2, QStyle::SP_MessageBoxWarning}, {3, QStyle::SP_MessageBoxCritical}};
  for (const auto& [number, name] : kIcons)
    if (number == icon)
      return widget.style()->standardIcon(name, nullptr, &widget).pixmap(kIconSize);
  return {};
}

/// A compositor lets the corners be soft; without one they are cut out of the window.
bool HasCompositor() {
  return ScreenSelectionOwner("_NET_WM_CM_S") != 0;
}

class TipWidget : public QWidget {
public:
  TipWidget(const TipContent& content, std::function<void(std::uint32_t)> on_mouse)
      : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus),
        balloon_(content.balloon), centered_(content.centered), title_(ToText(content.title)),
        prompt_(ToText(content.prompt)), fore_(ColorOf(content.fore)), back_(ColorOf(content.back)),
        on_mouse_(std::move(on_mouse)) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground, HasCompositor());
    setMouseTracking(true);
    setWindowTitle(QStringLiteral("Balloon"));
    setAccessibleName(title_.isEmpty() ? prompt_ : title_);
    setAccessibleDescription(prompt_);
    icon_ = IconOf(content.icon, *this);
    title_font_ = font();
    title_font_.setBold(true);
    Measure();
  }

  void MoveTo(const QPoint& point) {
    const QScreen* screen = point.isNull() ? nullptr : QGuiApplication::screenAt(point);
    if (screen == nullptr)
      screen = QGuiApplication::primaryScreen();
    place_ = point.isNull()
                 ? PlaceInCorner(size_, screen->availableGeometry())
                 : PlaceBalloon(size_, point, centered_, balloon_, screen->geometry(), screen->availableGeometry());
    setGeometry(place_.window);
    if (!testAttribute(Qt::WA_TranslucentBackground))
      setMask(QRegion(Outline().toFillPolygon().toPolygon()));
    update();
  }

  /// No more messages; the window goes once none of its handlers runs any more.
  void End() {
    on_mouse_ = {};
    hide();
    deleteLater();
  }

protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRect body = Body();
    QLinearGradient ground(body.topLeft(), body.bottomLeft());
    ground.setColorAt(0, back_.lighter(kGlow));
    ground.setColorAt(1, back_);
    painter.setBrush(ground);
    painter.setPen(Mixed(back_, fore_, kEdgeTint));
    painter.drawPath(Outline());

    QRect text = body.adjusted(kSidePadding, kEdgePadding, -kSidePadding, -kEdgePadding);
    painter.setPen(fore_);
    if (heading_.isValid()) {
      QRect heading(text.topLeft(), heading_);
      if (!icon_.isNull()) {
        painter.drawPixmap(heading.left(), heading.top() + (heading.height() - kIconSize) / 2, icon_);
        heading.setLeft(heading.left() + kIconSize + kIconGap);
      }
      painter.setFont(title_font_);
      painter.drawText(heading, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, title_);
      text.setTop(text.top() + heading_.height() + kHeadingGap);
    }
    painter.setFont(font());
    painter.drawText(text, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, prompt_);
  }

  void mouseMoveEvent(QMouseEvent* /*event*/) override { Tell(kMouseMove); }
  void mousePressEvent(QMouseEvent* event) override { TellButton(*event, 0); }
  void mouseReleaseEvent(QMouseEvent* event) override { TellButton(*event, kReleased); }
  void mouseDoubleClickEvent(QMouseEvent* event) override { TellButton(*event, kDoubleClick); }

private:
  void Measure() {
    const QRect widest(0, 0, kWidestText, QWIDGETSIZE_MAX);
    const QSize prompt = fontMetrics().boundingRect(widest, Qt::TextWordWrap, prompt_).size();
    if (!title_.isEmpty() || !icon_.isNull()) {
      const QFontMetrics metrics(title_font_);
      const int room = kWidestText - (icon_.isNull() ? 0 : kIconSize + kIconGap);
      title_ = metrics.elidedText(title_, Qt::ElideRight, room);
      heading_ = QSize(metrics.horizontalAdvance(title_) + kWidestText - room, std::max(metrics.height(), kIconSize));
    }
    const int heading_height = heading_.isValid() ? heading_.height() + kHeadingGap : 0;
    size_ = QSize(std::max(prompt.width(), heading_.width()) + 2 * kSidePadding,
                  prompt.height() + heading_height + 2 * kEdgePadding);
    size_.setWidth(std::max(size_.width(), 2 * (kPointerInset + kPointerHalfWidth)));
  }

  QRect Body() const { return place_.body.translated(-place_.window.topLeft()); }

  /// In the window's pixels, along their middles, so that the edge is drawn sharp.
  QPainterPath Outline() const {
    const QRectF body = QRectF(Body()).adjusted(0.5, 0.5, -0.5, -0.5);
    const double radius = balloon_ ? kBalloonRadius : kPlainRadius;
    QPainterPath outline;
    outline.addRoundedRect(body, radius, radius);
    if (!place_.points)
      return outline;
    const QPointF tip = QPointF(place_.tip - place_.window.topLeft()) + QPointF(0.5, 0.5);
    const double root_y = tip.y() < body.top() ? body.top() : body.bottom();
    const double reach = radius + kPointerHalfWidth;
    const double root_x = std::clamp(tip.x(), body.left() + reach, body.right() - reach);
    QPainterPath pointer;
    pointer.addPolygon(
        QPolygonF({QPointF(root_x - kPointerHalfWidth, root_y), tip, QPointF(root_x + kPointerHalfWidth, root_y)}));
    pointer.closeSubpath();
    return outline.united(pointer);
  }

  void TellButton(const QMouseEvent& event, std::uint32_t change) {
    if (event.button() == Qt::LeftButton)
      Tell(kLeftButton + change);
    else if (event.button() == Qt::RightButton)
      Tell(kRightButton + change);
    else if (event.button() == Qt::MiddleButton)
      Tell(kMiddleButton + change);
  }

  void Tell(std::uint32_t message) {
    RunHandler([&] {
      if (const auto told = on_mouse_) // a copy: the handler may end the tip
        told(message);
    });
  }

  bool balloon_;
  bool centered_;
  QString title_;
  QString prompt_;
  QColor fore_;
  QColor back_;
  std::function<void(std::uint32_t)> on_mouse_;
  QPixmap icon_;
  QFont title_font_;
  QSize heading_; // invalid without one
  QSize size_;
  BalloonPlace place_;
};

class QtTipWindow : public TipWindow {
public:
  explicit QtTipWindow(TipWidget* widget) : widget_(widget) {}
  QtTipWindow(const QtTipWindow&) = delete;
  QtTipWindow& operator=(const QtTipWindow&) = delete;
  ~QtTipWindow() override { widget_->End(); }
  void MoveTo(int x, int y) override { widget_->MoveTo({x, y}); }

private:
  TipWidget* widget_; // deletes itself, later
};

} // namespace

std::unique_ptr<TipWindow> QtTipWindows::Create(const TipContent& content, int x, int y,
                                                std::function<void(std::uint32_t message)> on_mouse) {
  if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")) ||
      QGuiApplication::primaryScreen() == nullptr)
    return nullptr;
  auto* widget = new TipWidget(content, std::move(on_mouse));
  auto tip = std::make_unique<QtTipWindow>(widget);
  tip->MoveTo(x, y);
  widget->show();
  return tip;
}

} // namespace kelmio

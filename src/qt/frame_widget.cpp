#include "qt/frame_widget.h"

#include <QApplication>
#include <QLayout>
#include <QLinearGradient>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QWindow>

#include "qt/handler_guard.h"
#include "qt/units.h"

namespace kelmio {

namespace {

/// A window whose background is below this lightness (of 255) is a dark one.
constexpr int kDarkBelow = 128;
/// How much of the theme's colour the frame of a dark window keeps, of 255.
constexpr int kDarkWeight = 105;
constexpr double kSignSize = 4.5;
constexpr double kSignWidth = 1.4;
constexpr double kButtonRadius = 3;
constexpr QRgb kCloseGround = 0xffc8372d;

QRect ToRect(const FrameRect& place) {
  return {place.left, place.top, place.width, place.height};
}

Color FromColor(const QColor& color) {
  return RgbColor(color.red(), color.green(), color.blue());
}

void DrawGradientInRectangle(QPainter& painter, const GradientFill& fill) {
  const QRect place = ToRect(fill.place);
  const bool flat = fill.direction == GradientFill::Direction::Horizontal;
  QLinearGradient gradient(place.topLeft(), flat ? place.topLeft() + QPoint(place.width(), 0)
                                                 : place.topLeft() + QPoint(0, place.height()));
  gradient.setColorAt(0, ToColor(fill.from));
  gradient.setColorAt(1, ToColor(fill.to));
  painter.fillRect(place, gradient);
}

void DrawSign(QPainter& painter, jcForms::Part part, const QPointF& center, bool maximized) {
  const double r = kSignSize;
  const auto box = [&](double x, double y, double size) {
    painter.drawRect(QRectF(center.x() + x, center.y() + y, size, size));
  };
  switch (part) {
  case jcForms::Part::MinButton:
    painter.drawLine(center + QPointF(-r, r - 1), center + QPointF(r, r - 1));
    break;
  case jcForms::Part::MaxButton:
    if (maximized) {
      box(-r, -r + 3, 2 * r - 3);
      painter.drawPolyline(QList<QPointF>{center + QPointF(-r + 3, -r + 3), center + QPointF(-r + 3, -r),
                                          center + QPointF(r, -r), center + QPointF(r, r - 3),
                                          center + QPointF(r - 3, r - 3)});
    } else {
      box(-r, -r, 2 * r);
    }
    break;
  default:
    painter.drawLine(center + QPointF(-r, -r), center + QPointF(r, r));
    painter.drawLine(center + QPointF(-r, r), center + QPointF(r, -r));
  }
}

} // namespace

FrameWidget::FrameWidget(QWidget* parent) : QWidget(parent) {
  setMouseTracking(true);
}

void FrameWidget::SetFrame(jcForms& frame) {
  frame_ = &frame;
  LayOut();
}

QFont FrameWidget::TitleFont() const {
  QFont title = QApplication::font();
  title.setBold(true);
  return title;
}

void FrameWidget::LayOut() {
  if (frame_ == nullptr)
    return;
  frame_->Layout(width(), height(), QFontMetrics(TitleFont()).boundingRect(QLatin1Char('H')).height());
  const int border = frame_->BorderWidth();
  if (QLayout* content = window()->layout())
    content->setContentsMargins(border, frame_->BarHeight(), border, border);
  update();
}

std::vector<GradientFill> FrameWidget::Fills(bool active) const {
  std::vector<GradientFill> fills = frame_->TitleBar(active);
  const QColor window_color = QApplication::palette().color(QPalette::Window);
  if (window_color.lightness() < kDarkBelow)
    for (GradientFill& fill : fills) {
      fill.from = Blend(fill.from, FromColor(window_color), kDarkWeight);
      fill.to = Blend(fill.to, FromColor(window_color), kDarkWeight);
    }
  return fills;
}

void FrameWidget::paintEvent(QPaintEvent* /*event*/) {
  if (frame_ == nullptr)
    return;
  QPainter painter(this);
  const bool active = isActiveWindow();
  const std::vector<GradientFill> fills = Fills(active);
  for (const GradientFill& fill : fills)
    DrawGradientInRectangle(painter, fill);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRect icon = ToRect(frame_->IconPlace());
  window()->windowIcon().paint(&painter, icon);
  PaintTitle(painter, fills);
  PaintCaptionBtns(painter, fills);
  painter.setRenderHint(QPainter::Antialiasing, false);
  PaintBorder(painter, active);
}

void FrameWidget::PaintTitle(QPainter& painter, const std::vector<GradientFill>& fills) const {
  painter.setFont(TitleFont());
  const QFontMetrics metrics = painter.fontMetrics();
  const QRect room = ToRect(frame_->TitlePlace());
  const QString title = QString::fromStdString(
      jcForms::TrimWord(window()->windowTitle().toStdString(), room.width(), [&](const std::string& text) {
        return metrics.horizontalAdvance(QString::fromStdString(text));
      }));
  QRect place = metrics.boundingRect(room, Qt::AlignLeft | Qt::AlignVCenter, title);
  if (frame_->Style == 4) // in the light of the middle
    place.moveLeft(std::max(room.left(), (width() - place.width()) / 2));
  const Color text = TextColorOn(fills, {place.left(), place.top(), place.width(), place.height()});
  constexpr int kAll = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip;
  if (frame_->TitleBarShadow) {
    QColor shadow = text == kWhite ? Qt::black : Qt::white;
    shadow.setAlphaF(0.45F);
    painter.setPen(shadow);
    painter.drawText(place.translated(1, 1), kAll, title);
  }
  painter.setPen(ToColor(text));
  painter.drawText(place, kAll, title);
}

void FrameWidget::PaintCaptionBtns(QPainter& painter, const std::vector<GradientFill>& fills) const {
  for (const jcForms::CaptionButton& button : frame_->CaptionButtons()) {
    const QRect place = ToRect(button.place);
    QColor sign = ToColor(TextColorOn(fills, button.place));
    const bool hot = frame_->Hot() == button.part;
    const bool pressed = frame_->Pressed() == button.part;
    if (hot || pressed) {
      const bool closes = button.part == jcForms::Part::CloseButton;
      QColor ground = closes ? QColor(kCloseGround) : sign;
      if (closes)
        sign = Qt::white;
      else
        ground.setAlphaF(pressed ? 0.35F : 0.18F);
      painter.setPen(Qt::NoPen);
      painter.setBrush(closes && pressed ? ground.darker(125) : ground);
      painter.drawRoundedRect(place, kButtonRadius, kButtonRadius);
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(sign, kSignWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    DrawSign(painter, button.part, QRectF(place).center(), window()->isMaximized());
  }
}

void FrameWidget::PaintBorder(QPainter& painter, bool active) const {
  const int border = frame_->BorderWidth();
  const int bar = frame_->BarHeight();
  if (border == 0)
    return;
  const bool dark = QApplication::palette().color(QPalette::Window).lightness() < kDarkBelow;
  const QColor line = ToColor(frame_->Colors(active).dark);
  const QColor ground = dark ? QApplication::palette().color(QPalette::Window) : ToColor(frame_->Colors(active).light);
  painter.setPen(Qt::NoPen);
  painter.setBrush(ground);
  painter.drawRect(0, bar, border, height() - bar);
  painter.drawRect(width() - border, bar, border, height() - bar);
  painter.drawRect(0, height() - border, width(), border);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(line);
  painter.drawRect(0, 0, width() - 1, height() - 1);
  painter.drawLine(0, bar - 1, width() - 1, bar - 1);
}

void FrameWidget::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  LayOut();
}

void FrameWidget::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::ActivationChange || event->type() == QEvent::PaletteChange)
    update();
  else if (event->type() == QEvent::ApplicationFontChange)
    LayOut();
}

void FrameWidget::mousePressEvent(QMouseEvent* event) {
  if (frame_ == nullptr || event->button() != Qt::LeftButton)
    return;
  held_ = frame_->MouseDown(event->pos().x(), event->pos().y());
  held_at_ = event->globalPosition().toPoint();
  held_window_ = window()->geometry();
  if (held_ == jcForms::Part::Icon)
    ShowMenu(mapToGlobal(QPoint(frame_->IconPlace().left, frame_->BarHeight())));
}

void FrameWidget::mouseMoveEvent(QMouseEvent* event) {
  if (frame_ == nullptr)
    return;
  if ((event->buttons() & Qt::LeftButton) != 0)
    return DragTo(event->globalPosition().toPoint());
  held_ = jcForms::Part::Inside;
  ShowPointer(frame_->HitTest(event->pos().x(), event->pos().y()));
  frame_->MouseMove(event->pos().x(), event->pos().y());
}

void FrameWidget::DragTo(const QPoint& place) {
  using Part = jcForms::Part;
  const bool moves = held_ == Part::Bar;
  const bool sizes = held_ == Part::Right || held_ == Part::Bottom || held_ == Part::Corner;
  const QPoint way = place - held_at_;
  if ((!moves && !sizes) || (moves && way.manhattanLength() < QApplication::startDragDistance()))
    return;
  Qt::Edges edges;
  edges.setFlag(Qt::RightEdge, held_ == Part::Right || held_ == Part::Corner);
  edges.setFlag(Qt::BottomEdge, held_ == Part::Bottom || held_ == Part::Corner);
  // The desktop does it where it can: with its own snapping, and on Wayland nobody else may.
  QWindow* handle = window()->windowHandle();
  if (handle != nullptr && (moves ? handle->startSystemMove() : handle->startSystemResize(edges))) {
    held_ = Part::Inside;
    return;
  }
  if (moves) {
    window()->move(held_window_.topLeft() + way);
    return;
  }
  const QSize size = held_window_.size() +
                     QSize((edges & Qt::RightEdge) != 0 ? way.x() : 0, (edges & Qt::BottomEdge) != 0 ? way.y() : 0);
  window()->resize(size.expandedTo(window()->minimumSizeHint()));
}

void FrameWidget::mouseReleaseEvent(QMouseEvent* event) {
  held_ = jcForms::Part::Inside;
  if (frame_ != nullptr && event->button() == Qt::LeftButton)
    RunHandler([&] { frame_->MouseUp(event->pos().x(), event->pos().y()); });
}

void FrameWidget::mouseDoubleClickEvent(QMouseEvent* event) {
  if (frame_ != nullptr && event->button() == Qt::LeftButton)
    RunHandler([&] { frame_->DblClick(event->pos().x(), event->pos().y()); });
}

void FrameWidget::contextMenuEvent(QContextMenuEvent* event) {
  if (frame_ == nullptr)
    return;
  const jcForms::Part part = frame_->HitTest(event->pos().x(), event->pos().y());
  if (part == jcForms::Part::Bar || part == jcForms::Part::Icon)
    ShowMenu(event->globalPos());
}

void FrameWidget::leaveEvent(QEvent* event) {
  QWidget::leaveEvent(event);
  if (frame_ != nullptr)
    frame_->MouseLeave();
}

void FrameWidget::ShowPointer(jcForms::Part part) {
  if (part == jcForms::Part::Right)
    setCursor(Qt::SizeHorCursor);
  else if (part == jcForms::Part::Bottom)
    setCursor(Qt::SizeVerCursor);
  else if (part == jcForms::Part::Corner)
    setCursor(Qt::SizeFDiagCursor);
  else
    unsetCursor();
}

void FrameWidget::ShowMenu(const QPoint& place) {
  LayOut(); // the entries follow the window's state
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  int entry = 0;
  for (const jcForms::MenuItem& item : frame_->SysMnu()) {
    const int number = entry++;
    if (item.caption == "-") {
      menu->addSeparator();
      continue;
    }
    QAction* action = menu->addAction(ToText(item.caption));
    action->setEnabled(item.enabled);
    action->setCheckable(item.checked || number == jcForms::kOnTop);
    action->setChecked(item.checked);
    connect(action, &QAction::triggered, this, [this, number] {
      if (frame_ != nullptr)
        RunHandler([&] { frame_->MnuSyst_Click(number); });
    });
  }
  menu->popup(place);
}

} // namespace kelmio

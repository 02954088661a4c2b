#include "qt/slider_widget.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace kelmio {

namespace {

constexpr int kThumbSize = 16;
constexpr double kThumbRadius = 6.5;
constexpr double kFocusRadius = 7.75;
constexpr double kRailThickness = 4;
constexpr float kRailStrength = 0.25F; // of the text colour, from 0 to 1
constexpr int kLeastLength = 60;
constexpr int kUsualLength = 200;
constexpr int kThickness = 22;
/// Room between the thumb and its tip.
constexpr int kTipGap = 6;

} // namespace

SliderWidget::SliderWidget(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
  connect(this, &QAbstractSlider::actionTriggered, this, [this] { on_step(sliderPosition()); });
}

SliderWidget::~SliderWidget() = default;

QSize SliderWidget::ThumbSize() const {
  return Flat() ? QSize(kThumbSize, height()) : QSize(width(), kThumbSize);
}

void SliderWidget::SetThumb(int place) {
  if (place == place_)
    return;
  place_ = place;
  update();
}

void SliderWidget::SetFilled(bool filled) {
  filled_ = filled;
  update();
}

void SliderWidget::SetTip(const QString& text) {
  if (text.isEmpty()) {
    tip_.reset();
    return;
  }
  if (tip_ == nullptr) {
    tip_ = std::make_unique<QLabel>(window(), Qt::ToolTip);
    tip_->setTextFormat(Qt::PlainText);
    tip_->setProperty("tip", true);
    tip_->setFont(QToolTip::font());
    tip_->setPalette(QToolTip::palette());
    tip_->setMargin(4);
    tip_->setAlignment(Qt::AlignCenter);
  }
  tip_->setText(text);
  tip_->adjustSize();
  const QPoint center = mapToGlobal(ThumbCenter().toPoint());
  const int reach = kThumbSize / 2 + kTipGap;
  tip_->move(Flat() ? center - QPoint(tip_->width() / 2, reach + tip_->height())
                    : center + QPoint(reach, -tip_->height() / 2));
  tip_->show();
}

QSize SliderWidget::sizeHint() const {
  return Flat() ? QSize(kUsualLength, kThickness) : QSize(kThickness, kUsualLength);
}

QSize SliderWidget::minimumSizeHint() const {
  return Flat() ? QSize(kLeastLength, kThickness) : QSize(kThickness, kLeastLength);
}

QPointF SliderWidget::ThumbCenter() const {
  const double along = place_ + kThumbSize / 2.0;
  return Flat() ? QPointF(along, height() / 2.0) : QPointF(width() / 2.0, along);
}

void SliderWidget::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
  const QColor accent = isEnabled() ? palette().color(QPalette::Highlight) : palette().color(QPalette::Mid);
  const QPointF thumb = ThumbCenter();

  const double end = kThumbSize / 2.0 - kRailThickness / 2.0; // the rail ends under the middle of the thumb
  const QRectF rail = Flat() ? QRectF(end, thumb.y() - kRailThickness / 2, width() - 2 * end, kRailThickness)
                             : QRectF(thumb.x() - kRailThickness / 2, end, kRailThickness, height() - 2 * end);
  painter.setPen(Qt::NoPen);
  QColor ground = palette().color(group, QPalette::WindowText);
  ground.setAlphaF(kRailStrength); // so that it stands out from any page
  painter.setBrush(ground);
  painter.drawRoundedRect(rail, kRailThickness / 2, kRailThickness / 2);
  if (filled_) {
    QRectF done = rail; // from the end of the lowest value, which is the bottom of an upright slider
    if (Flat())
      done.setRight(thumb.x());
    else
      done.setTop(thumb.y());
    painter.setBrush(accent);
    painter.drawRoundedRect(done, kRailThickness / 2, kRailThickness / 2);
  }

  if (hasFocus()) {
    painter.setBrush(Qt::NoBrush);
    QColor ring = accent;
    ring.setAlphaF(0.45F);
    painter.setPen(QPen(ring, 2));
    painter.drawEllipse(thumb, kFocusRadius - 0.75, kFocusRadius - 0.75);
  }
  painter.setBrush(palette().color(group, underMouse() && isEnabled() ? QPalette::Base : QPalette::Button));
  painter.setPen(QPen(accent, 1.5));
  painter.drawEllipse(thumb, kThumbRadius - 0.75, kThumbRadius - 0.75);
  if (isEnabled()) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawEllipse(thumb, kThumbRadius / 2.6, kThumbRadius / 2.6);
  }
}

void SliderWidget::mousePressEvent(QMouseEvent* event) {
  on_press(*event);
  event->accept();
}

void SliderWidget::mouseMoveEvent(QMouseEvent* event) {
  on_move(*event);
  event->accept();
}

void SliderWidget::mouseReleaseEvent(QMouseEvent* event) {
  on_release(*event);
  event->accept();
}

// A turn of the wheel over the window must not seek.
void SliderWidget::wheelEvent(QWheelEvent* event) {
  event->ignore();
}

void SliderWidget::resizeEvent(QResizeEvent* event) {
  QSlider::resizeEvent(event);
  on_layout();
}

void SliderWidget::hideEvent(QHideEvent* event) {
  tip_.reset();
  QSlider::hideEvent(event);
}

void SliderWidget::changeEvent(QEvent* event) {
  QSlider::changeEvent(event);
  update();
}

// A value that moves the thumb by less than a pixel needs no painting: a message that plays tells fifty a second.
void SliderWidget::sliderChange(SliderChange change) {
  if (change == SliderOrientationChange)
    QSlider::sliderChange(change);
}

} // namespace kelmio

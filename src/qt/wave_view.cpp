#include "qt/wave_view.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kelmio {

namespace {

constexpr long kTelephoneRate = 8000;
constexpr long kBarsPerSecond = 25;
constexpr int kBarWidth = 2; // pixels, and one more to the next bar
constexpr int kBarStep = 3;
constexpr int kFrameMs = 70;
/// Blocks come several times a second while there is a recording.
constexpr int kSilenceMs = 2000;
constexpr double kFullScale = 32768;
constexpr int kMostBars = 4096;
constexpr int kMargin = 3;

/// Height of a sample from the middle line, as a part of the room there. Speech on a line is far below full scale; a
/// root makes it visible.
double Reach(double sample) {
  return std::sqrt(std::min(1.0, std::abs(sample) / kFullScale));
}

} // namespace

WaveView::WaveView(QWidget* parent) : QWidget(parent), samples_per_bar_(kTelephoneRate / kBarsPerSecond) {
  repaint_.setSingleShot(true);
  repaint_.setInterval(kFrameMs);
  connect(&repaint_, &QTimer::timeout, this, [this] { update(); });
  silence_.setSingleShot(true);
  silence_.setInterval(kSilenceMs);
  connect(&silence_, &QTimer::timeout, this, [this] { Clear(); });
}

void WaveView::Begin(long samples_per_second) {
  samples_per_bar_ = std::max(1L, (samples_per_second > 0 ? samples_per_second : kTelephoneRate) / kBarsPerSecond);
  Clear();
}

void WaveView::Add(std::span<const std::byte> block) {
  if (!isVisible() || window()->isMinimized())
    return;
  for (std::size_t at = 0; at + 1 < block.size(); at += 2) {
    std::int16_t sample = 0;
    std::memcpy(&sample, &block[at], sizeof sample);
    Take(sample);
  }
  const auto most = static_cast<std::size_t>(std::clamp(width() / kBarStep + 1, 1, kMostBars));
  if (bars_.size() > most)
    bars_.erase(bars_.begin(), bars_.end() - static_cast<std::ptrdiff_t>(most));
  if (!repaint_.isActive())
    repaint_.start();
  silence_.start();
}

void WaveView::Take(int sample) {
  filling_.low = std::min(filling_.low, sample);
  filling_.high = std::max(filling_.high, sample);
  squares_ += static_cast<double>(sample) * sample;
  if (++samples_ < samples_per_bar_)
    return;
  filling_.loudness = std::sqrt(squares_ / static_cast<double>(samples_));
  bars_.push_back(filling_);
  filling_ = {};
  samples_ = 0;
  squares_ = 0;
}

void WaveView::Clear() {
  bars_.clear();
  filling_ = {};
  samples_ = 0;
  squares_ = 0;
  update();
}

QSize WaveView::sizeHint() const {
  return {160, 30};
}

QSize WaveView::minimumSizeHint() const {
  return {40, 20};
}

void WaveView::hideEvent(QHideEvent* event) {
  repaint_.stop();
  silence_.stop();
  Clear();
  QWidget::hideEvent(event);
}

void WaveView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(palette().color(QPalette::Mid));
  painter.setBrush(palette().color(QPalette::Base));
  painter.drawRoundedRect(box, 3, 3);
  painter.setRenderHint(QPainter::Antialiasing, false);
  const double middle = height() / 2.0;
  painter.drawLine(QPointF(kMargin, middle), QPointF(width() - kMargin, middle));

  const double room = middle - kMargin;
  const QColor loud = palette().color(QPalette::Highlight);
  QColor peak = loud;
  peak.setAlphaF(0.4F);
  double right = width() - kMargin;
  for (auto bar = bars_.rbegin(); bar != bars_.rend() && right - kBarWidth >= kMargin; ++bar, right -= kBarStep) {
    const double up = Reach(bar->high) * room;
    const double down = Reach(bar->low) * room;
    const double core = Reach(bar->loudness) * room;
    painter.fillRect(QRectF(right - kBarWidth, middle - up, kBarWidth, up + down), peak);
    painter.fillRect(QRectF(right - kBarWidth, middle - core, kBarWidth, 2 * core), loud);
  }
}

} // namespace kelmio

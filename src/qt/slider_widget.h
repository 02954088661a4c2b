// The drawn slider: a rail, a round thumb and a tip with the value.
#pragma once

#include <QRect>
#include <QSlider>

#include <functional>
#include <memory>

class QLabel;

namespace kelmio {

/// It draws and tells what the mouse does; where the thumb stands is not its own affair. From the toolkit's slider
/// come the keys and what assistive programs are told: range and value. Sizes and places in pixels.
class SliderWidget : public QSlider {
public:
  explicit SliderWidget(QWidget* parent = nullptr);
  ~SliderWidget() override;

  /// The size of the thumb in the rail's direction; across it, the thumb has all the room there is.
  QSize ThumbSize() const;
  /// Left or top edge of the thumb, in the rail's direction.
  void SetThumb(int place);
  /// The part of the rail up to the thumb has a colour of its own.
  void SetFilled(bool filled);
  /// An empty text hides the tip.
  void SetTip(const QString& text);

  std::function<void()> on_layout = [] {};
  std::function<void(const QMouseEvent&)> on_press = [](const QMouseEvent&) {};
  std::function<void(const QMouseEvent&)> on_move = [](const QMouseEvent&) {};
  std::function<void(const QMouseEvent&)> on_release = [](const QMouseEvent&) {};
  /// A key or an assistive program asks for this value.
  std::function<void(int value)> on_step = [](int) {};

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void changeEvent(QEvent* event) override;
  void sliderChange(SliderChange change) override;

private:
  bool Flat() const { return orientation() == Qt::Horizontal; }
  QPointF ThumbCenter() const;

  int place_ = 0;
  bool filled_ = true;
  std::unique_ptr<QLabel> tip_;
};

} // namespace kelmio

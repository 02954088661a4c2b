// Draws a window's own frame and takes the mouse on it.
#pragma once

#include <QPoint>
#include <QWidget>

#include "controls/jcForms.h"

class QPainter;

namespace kelmio {

/// Lies behind the whole window: the window's content covers all of it but the title bar and the border. It is the view
/// of one `jcForms`; without one it draws nothing.
class FrameWidget : public QWidget {
public:
  explicit FrameWidget(QWidget* parent = nullptr);

  /// The frame to show. It outlives the widget.
  void SetFrame(jcForms& frame);
  /// Measures anew, and leaves the window's content the room that the frame doesn't take.
  void LayOut();

protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void leaveEvent(QEvent* event) override;

private:
  QFont TitleFont() const;
  std::vector<GradientFill> Fills(bool active) const;
  void PaintTitle(QPainter& painter, const std::vector<GradientFill>& fills) const;
  void PaintCaptionBtns(QPainter& painter, const std::vector<GradientFill>& fills) const;
  void PaintBorder(QPainter& painter, bool active) const;
  void ShowPointer(jcForms::Part part);
  void DragTo(const QPoint& place);
  void ShowMenu(const QPoint& place);

  jcForms* frame_ = nullptr;
  // What the mouse holds: the bar, an edge, or nothing (`Inside`).
  jcForms::Part held_ = jcForms::Part::Inside;
  QPoint held_at_;    // on the screen
  QRect held_window_; // as it stood then
};

} // namespace kelmio

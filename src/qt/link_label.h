// A field's value, which may be a link.
#pragma once

#include <QLabel>

#include <functional>

namespace kelmio {

/// A line of text that never asks for more room than it gets: what doesn't fit is cut with dots and told in full by
/// the tool tip. As a link it is reached by the Tab key and clicked by mouse, Enter or the space bar.
class LinkLabel : public QLabel {
public:
  explicit LinkLabel(QWidget* parent = nullptr);

  void SetLink(bool link);
  bool IsLink() const { return link_; }
  std::function<void()> on_click = [] {};

  QSize minimumSizeHint() const override;

protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  QRect TextBox() const;

  bool link_ = false;
};

} // namespace kelmio

#include "qt/link_label.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>
#include <QToolTip>

#include <algorithm>

namespace kelmio {

LinkLabel::LinkLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
}

void LinkLabel::SetLink(bool link) {
  if (link == link_)
    return;
  link_ = link;
  setFocusPolicy(link ? Qt::TabFocus : Qt::NoFocus);
  setAccessibleDescription(link ? QStringLiteral("Link") : QString());
  if (link)
    setCursor(Qt::PointingHandCursor);
  else
    unsetCursor();
  update();
}

QSize LinkLabel::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth() * 4, fontMetrics().height()};
}

QRect LinkLabel::TextBox() const {
  QRect box = contentsRect();
  box.setWidth(std::min(box.width(), fontMetrics().horizontalAdvance(text()) + 1));
  return box;
}

bool LinkLabel::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip && toolTip().isEmpty() &&
      fontMetrics().horizontalAdvance(text()) > contentsRect().width()) {
    // A tool tip takes markup where it sees some.
    const QString whole = QStringLiteral("<span>%1</span>").arg(text().toHtmlEscaped());
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), whole, this);
    return true;
  }
  return QLabel::event(event);
}

void LinkLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const bool live = link_ && isEnabled();
  painter.setPen(live ? palette().color(QPalette::Link) : palette().color(foregroundRole()));
  QFont shown = font();
  shown.setUnderline(live);
  painter.setFont(shown);
  const QRect box = contentsRect();
  painter.drawText(box, static_cast<int>(alignment()) | Qt::TextSingleLine,
                   fontMetrics().elidedText(text(), Qt::ElideRight, box.width()));
  if (live && hasFocus()) {
    painter.setPen(QPen(palette().color(QPalette::Link), 1, Qt::DotLine));
    painter.drawRect(TextBox().adjusted(0, 0, -1, -1));
  }
}

void LinkLabel::mouseReleaseEvent(QMouseEvent* event) {
  if (link_ && event->button() == Qt::LeftButton && TextBox().contains(event->pos()))
    on_click();
  else
    QLabel::mouseReleaseEvent(event);
}

void LinkLabel::keyPressEvent(QKeyEvent* event) {
  const int key = event->key();
  if (link_ && !event->isAutoRepeat() && (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space))
    on_click();
  else
    QLabel::keyPressEvent(event);
}

} // namespace kelmio

#include "qt/row_list.h"

#include <QDrag>
#include <QMimeData>
#include <QPainter>

#include <algorithm>

#include "qt/command_icons.h"

namespace kelmio {

namespace {

constexpr int kPictureSize = 44;
constexpr int kIconSize = 28;
constexpr int kBadgeHeight = 18;
/// The command whose icon shows sheets of paper.
constexpr int kSheets = 102;

QPixmap DragPicture(qsizetype rows, const QWidget& list) {
  QPixmap picture(QSize(kPictureSize, kPictureSize) * list.devicePixelRatioF());
  picture.setDevicePixelRatio(list.devicePixelRatioF());
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  CommandIcon(kSheets).paint(&painter, 0, 0, kIconSize, kIconSize);
  const QString number = QString::number(rows);
  const int width = std::max(kBadgeHeight, painter.fontMetrics().horizontalAdvance(number) + kBadgeHeight / 2);
  const QRect badge(kPictureSize - width, kPictureSize - kBadgeHeight, width, kBadgeHeight);
  painter.setPen(Qt::NoPen);
  painter.setBrush(list.palette().highlight());
  painter.drawRoundedRect(badge, kBadgeHeight / 2.0, kBadgeHeight / 2.0);
  painter.setPen(list.palette().color(QPalette::HighlightedText));
  painter.drawText(badge, Qt::AlignCenter, number);
  return picture;
}

} // namespace

void RowList::startDrag(Qt::DropActions actions) {
  const QModelIndexList rows = selectionModel()->selectedRows();
  if (rows.isEmpty())
    return;
  auto* drag = new QDrag(this);
  drag->setMimeData(model()->mimeData(rows));
  drag->setPixmap(DragPicture(rows.size(), *this));
  drag->setHotSpot({-8, -8}); // beside the pointer
  drag->exec(actions, Qt::MoveAction);
}

} // namespace kelmio

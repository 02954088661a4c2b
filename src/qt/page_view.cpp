#include "qt/page_view.h"

#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QKeyEvent>
#include <QTextDocument>

#include <utility>

namespace kelmio {

namespace {

/// The file behind an address; empty for one that leads elsewhere.
QString FileOf(const QUrl& address) {
  if (address.isLocalFile())
    return address.toLocalFile();
  return address.scheme() == QLatin1String("qrc") ? QLatin1Char(':') + address.path() : QString();
}

/// A drawing is rendered at the screen's own resolution.
QImage ReadPicture(const QString& file, double dots) {
  QImageReader reader(file);
  if (const QSize size = reader.size(); size.isValid() && reader.supportsOption(QImageIOHandler::ScaledSize))
    reader.setScaledSize(size * dots);
  else
    dots = 1;
  QImage picture = reader.read();
  picture.setDevicePixelRatio(dots);
  return picture;
}

} // namespace

PageView::PageView(QWidget* parent) : QTextBrowser(parent) {
  setOpenLinks(false);
  connect(this, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) { on_link(source().resolved(link)); });
}

QString PageView::ThemedSheet(const QByteArray& sheet) const {
  QString themed = QString::fromUtf8(sheet);
  const std::pair<const char*, QPalette::ColorRole> names[] = {{"palette(link)", QPalette::Link},
                                                               {"palette(mid)", QPalette::Mid},
                                                               {"palette(alternate-base)", QPalette::AlternateBase}};
  for (const auto& [name, role] : names)
    themed.replace(QLatin1String(name), palette().color(role).name());
  return themed;
}

QVariant PageView::loadResource(int type, const QUrl& name) {
  const QString path = FileOf(source().resolved(name));
  if (path.isEmpty() || QFileInfo(path).isDir())
    return {};
  if (type == QTextDocument::ImageResource)
    return ReadPicture(path, devicePixelRatioF());
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    return {};
  const QByteArray bytes = file.readAll();
  return type == QTextDocument::StyleSheetResource ? QVariant(ThemedSheet(bytes)) : QVariant(bytes);
}

void PageView::changeEvent(QEvent* event) {
  QTextBrowser::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && !source().isEmpty())
    reload();
}

void PageView::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Back) || event->matches(QKeySequence::Forward) || event->key() == Qt::Key_Escape)
    event->ignore();
  else
    QTextBrowser::keyPressEvent(event);
}

} // namespace kelmio

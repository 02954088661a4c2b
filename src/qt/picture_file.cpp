#include "qt/picture_file.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QSaveFile>

#include <algorithm>

namespace kelmio {

namespace {

constexpr qint64 kMostFileBytes = 64LL * 1024 * 1024;
constexpr int kMostMegabytes = 256; // of one image in memory
constexpr int kMostPixelsAcross = 1024;
/// A format without a way to shrink is read in full first: so many pixels are a matter of a second, not more.
constexpr qint64 kMostPixels = 64LL * 1024 * 1024;
constexpr int kBytesPerPixel = 3;

} // namespace

QImage ReadPicture(const std::string& path) {
  const QString name = QFile::decodeName(path.c_str());
  const QFileInfo file(name);
  if (!file.isFile() || file.size() > kMostFileBytes) // a pipe would never end
    return {};
  QImageReader::setAllocationLimit(kMostMegabytes);
  QImageReader reader(name);
  reader.setDecideFormatFromContent(true);
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  const bool shrinks = reader.format() == "jpeg";
  if (!shrinks && qint64{size.width()} * size.height() > kMostPixels)
    return {};
  if (size.width() > kMostPixelsAcross || size.height() > kMostPixelsAcross)
    reader.setScaledSize(size.scaled(kMostPixelsAcross, kMostPixelsAcross, Qt::KeepAspectRatio).expandedTo({1, 1}));
  return reader.read();
}

QImage ToQImage(const Image& image) {
  if (image.Empty())
    return {};
  return QImage(image.rgb.data(), image.width, image.height, qsizetype{image.width} * kBytesPerPixel,
                QImage::Format_RGB888)
      .copy();
}

std::optional<Image> QtImageCodec::LoadStretched(const std::string& path, int width, int height) {
  const QImage picture = ReadPicture(path);
  if (picture.isNull() || width <= 0 || height <= 0)
    return std::nullopt;
  QImage drawn(width, height, QImage::Format_RGB888);
  drawn.fill(Qt::white);
  QPainter painter(&drawn);
  painter.drawImage(0, 0, picture.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
  painter.end();

  Image image{width, height, {}};
  const auto line_bytes = static_cast<std::size_t>(width) * kBytesPerPixel;
  image.rgb.reserve(line_bytes * static_cast<std::size_t>(height));
  for (int line = 0; line < height; ++line) {
    const uchar* pixels = drawn.constScanLine(line);
    image.rgb.insert(image.rgb.end(), pixels, pixels + line_bytes);
  }
  return image;
}

bool QtImageCodec::SaveBitmap(const Image& image, const std::string& path) {
  QSaveFile file(QFile::decodeName(path.c_str()));
  const QImage picture = ToQImage(image);
  return !picture.isNull() && file.open(QIODevice::WriteOnly) && picture.save(&file, "BMP") && file.commit();
}

} // namespace kelmio

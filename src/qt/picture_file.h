// Picture files of the user's choice, read with care.
#pragma once

#include <QImage>

#include <string>

#include "platform/image.h"

namespace kelmio {

/// The picture of a file, turned upright; at most some thousand pixels across: a larger one is made smaller while it is
/// read. A null image for a file that is no picture, or is larger than a photo may be. User interface thread.
QImage ReadPicture(const std::string& path);

/// A null image for an empty picture.
QImage ToQImage(const Image& image);

class QtImageCodec : public ImageCodec {
public:
  std::optional<Image> LoadStretched(const std::string& path, int width, int height) override;
  bool SaveBitmap(const Image& image, const std::string& path) override;
};

} // namespace kelmio

// Pictures in memory, and their files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelmio {

/// Rows from the top, pixels from the left, three bytes for each: red, green, blue.
struct Image {
  int width = 0;  // pixels
  int height = 0; // pixels
  std::vector<std::uint8_t> rgb;

  bool Empty() const { return rgb.empty(); }
  bool operator==(const Image&) const = default;
};

/// User interface thread only. Errors are silent: the outcome tells.
class ImageCodec {
public:
  virtual ~ImageCodec() = default;
  /// Reads a GIF, JPEG, BMP or PNG file and stretches it to this size, whatever its proportions; transparent parts
  /// become white. Nothing for a file that is no picture or needs more memory than a photo may take.
  virtual std::optional<Image> LoadStretched(const std::string& path, int width, int height) = 0;
  /// Writes a bitmap file of 24 bits a pixel in the place of `path`, as a whole or not at all. False when it can't
  /// be written.
  virtual bool SaveBitmap(const Image& image, const std::string& path) = 0;
};

} // namespace kelmio

// A box that shows a picture stretched to its whole size.
#pragma once

#include <functional>
#include <string>

#include "controls/basic_controls.h"
#include "controls/control.h"
#include "platform/image.h"

namespace kelmio {

/// User interface thread only.
class PictureBox : public Control {
public:
  /// Path of an image file; empty for none. A file that can't be read shows nothing. Assigning the same path
  /// again after `Reload` shows what the file holds then.
  Property<std::string> Picture{*this};
  /// A picture drawn into the box; it stands before `Picture` while it isn't empty.
  Property<Image> Drawing{*this};
  Property<Color> BackColor{*this, 0xFFFFFF};

  std::function<void()> Click = [] {};

  /// The file of `Picture` has another content now.
  void Reload() { Changed(); }
};

} // namespace kelmio

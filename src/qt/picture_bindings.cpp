// Pictures, and the view of a recording's signal.
#include <QFileInfo>
#include <QImageReader>
#include <QLabel>

#include "controls/picture_box.h"
#include "controls/spectrum_view.h"
#include "qt/bindings.h"
#include "qt/colors.h"
#include "qt/wave_view.h"

namespace kelmio {

namespace {

/// Photos come from files of the user's choice. One that is larger than this is no photo; one with more pixels than
/// a box needs is made smaller while it is read.
constexpr qint64 kMostFileBytes = 64LL * 1024 * 1024;
constexpr int kMostMegabytes = 256; // of one image in memory
constexpr int kMostPixelsAcross = 1024;

QPixmap ReadPicture(const std::string& path) {
  const QString name = QFile::decodeName(path.c_str());
  const QFileInfo file(name);
  if (!file.isFile() || file.size() > kMostFileBytes) // a pipe would never end
    return {};
  QImageReader::setAllocationLimit(kMostMegabytes);
  QImageReader reader(name);
  reader.setDecideFormatFromContent(true);
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  if (size.width() > kMostPixelsAcross || size.height() > kMostPixelsAcross)
    reader.setScaledSize(size.scaled(kMostPixelsAcross, kMostPixelsAcross, Qt::KeepAspectRatio).expandedTo({1, 1}));
  return QPixmap::fromImage(reader.read());
}

class PictureBinding : public ControlBinding {
public:
  PictureBinding(QLabel& widget, PictureBox& model) : ControlBinding(model, widget), widget_(widget), model_(model) {
    widget.setScaledContents(true); // to the whole box, whatever its proportions
  }

protected:
  void Show() override {
    SetBackColor(widget_, model_.BackColor);
    widget_.setPixmap(model_.Picture.Get().empty() ? QPixmap() : ReadPicture(model_.Picture.Get()));
  }

private:
  QLabel& widget_;
  PictureBox& model_;
};

class SpectrumBinding : public ControlBinding {
public:
  SpectrumBinding(WaveView& widget, SpectrumView& model)
      : ControlBinding(model, widget), widget_(widget), model_(model) {
    model.Draw = [this](std::span<const std::byte> block) { widget_.Add(block); };
  }
  ~SpectrumBinding() override {
    model_.Draw = [](std::span<const std::byte>) {};
  }

protected:
  // The format may tell how a recording is stored; the blocks are 16-bit samples always.
  void Show() override { widget_.Begin(model_.FormatA); }

private:
  WaveView& widget_;
  SpectrumView& model_;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, PictureBox& box) {
  auto* target = qobject_cast<QLabel*>(&widget);
  return target != nullptr ? new PictureBinding(*target, box) : nullptr;
}

ControlBinding* BindControl(QWidget& widget, SpectrumView& view) {
  auto* target = dynamic_cast<WaveView*>(&widget);
  return target != nullptr ? new SpectrumBinding(*target, view) : nullptr;
}

} // namespace kelmio

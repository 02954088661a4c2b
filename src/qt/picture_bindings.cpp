// Pictures, and the view of a recording's signal.
#include <QLabel>
#include <QMouseEvent>

#include "controls/picture_box.h"
#include "controls/spectrum_view.h"
#include "qt/bindings.h"
#include "qt/colors.h"
#include "qt/picture_file.h"
#include "qt/units.h"
#include "qt/wave_view.h"

namespace kelmio {

namespace {

class PictureBinding : public ControlBinding {
public:
  PictureBinding(QLabel& widget, PictureBox& model)
      : ControlBinding(model, widget), widget_(widget), model_(model), swatch_(widget.property("swatch").toBool()) {
    widget.setScaledContents(true); // to the whole box, whatever its proportions
    widget.setBackgroundRole(QPalette::Base);
    widget.setAutoFillBackground(true);
    widget.installEventFilter(this);
  }

protected:
  void Show() override {
    if (swatch_) {
      QPalette palette; // the frame follows the theme
      palette.setColor(QPalette::Base, ToColor(model_.BackColor));
      widget_.setPalette(palette);
    } else {
      SetBackColor(widget_, model_.BackColor);
    }
    if (!model_.Drawing.Get().Empty())
      widget_.setPixmap(QPixmap::fromImage(ToQImage(model_.Drawing)));
    else
      widget_.setPixmap(model_.Picture.Get().empty() ? QPixmap() : QPixmap::fromImage(ReadPicture(model_.Picture)));
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::MouseButtonRelease) {
      const auto& mouse = static_cast<const QMouseEvent&>(*event);
      if (mouse.button() == Qt::LeftButton && widget_.rect().contains(mouse.position().toPoint()))
        RunHandler([this] { model_.Click(); });
    }
    return ControlBinding::eventFilter(watched, event);
  }

private:
  QLabel& widget_;
  PictureBox& model_;
  bool swatch_; // it shows the colour itself, not what the colour stands for
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

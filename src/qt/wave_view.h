// The signal of a running recording, as a moving wave form.
#pragma once

#include <QTimer>
#include <QWidget>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>

namespace kelmio {

/// Peaks and loudness of the last seconds, the newest at the right. A view that nobody sees does nothing; one that
/// gets no more samples empties itself.
class WaveView : public QWidget {
public:
  explicit WaveView(QWidget* parent = nullptr);

  /// Begins anew, with samples of this rate; 0 or less for that of the telephone.
  void Begin(long samples_per_second);
  /// 16-bit samples in the order of this computer's bytes; an odd byte at the end is left out.
  void Add(std::span<const std::byte> block);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

protected:
  void paintEvent(QPaintEvent* event) override;
  void hideEvent(QHideEvent* event) override;

private:
  /// What one bar shows.
  struct Bar {
    int low = 0;
    int high = 0;
    double loudness = 0;
  };

  void Take(int sample);
  void Clear();

  QTimer repaint_;
  QTimer silence_;
  std::deque<Bar> bars_;
  long samples_per_bar_;
  long samples_ = 0; // of the bar that is being filled
  double squares_ = 0;
  Bar filling_;
};

} // namespace kelmio

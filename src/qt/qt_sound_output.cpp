#include "qt/qt_sound_output.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSink>
#include <QIODevice>
#include <QMediaDevices>

#include <algorithm>
#include <chrono>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "media/wave_file.h"
#include "qt/handler_guard.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;

/// What the device holds beforehand: the sound goes on while the user interface is busy for so long.
constexpr std::chrono::milliseconds kAhead = 500ms;
constexpr std::chrono::milliseconds kWatchInterval = 250ms;
/// A device that plays nothing for so long has gone, even where nobody says so. A wireless one may take some
/// seconds to begin.
constexpr std::chrono::milliseconds kLostAfter = 5s;

constexpr int kBytesPerSample = sizeof(std::int16_t);

} // namespace

/// The sound as a stream of bytes that the sink reads.
class QtSoundOutput::Source : public QIODevice {
public:
  explicit Source(std::unique_ptr<WaveReader> sound) : sound_(std::move(sound)) {
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
  }

  bool isSequential() const override { return true; }
  qint64 bytesAvailable() const override { return sound_->Left() * kBytesPerSample; }
  bool AllGiven() const { return sound_->Left() == 0; }

  std::function<void()> all_given = [] {};

protected:
  qint64 readData(char* data, qint64 size) override {
    if (AllGiven())
      return 0;
    samples_.resize(static_cast<std::size_t>(size / kBytesPerSample));
    const std::size_t count = sound_->Read(samples_);
    const auto bytes = std::as_bytes(std::span(samples_).first(count));
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::byte*>(data));
    if (AllGiven())
      all_given();
    return static_cast<qint64>(bytes.size());
  }
  qint64 writeData(const char* /*data*/, qint64 /*size*/) override { return -1; }

private:
  std::unique_ptr<WaveReader> sound_;
  std::vector<std::int16_t> samples_;
};

QtSoundOutput::QtSoundOutput() {
  watch_.setInterval(kWatchInterval);
  QObject::connect(&watch_, &QTimer::timeout, &watch_, [this] { Watch(); });
}

QtSoundOutput::~QtSoundOutput() {
  Stop();
}

bool QtSoundOutput::Start(std::unique_ptr<WaveReader> sound) {
  Stop();
  QAudioFormat format;
  format.setSampleRate(sound->Rate());
  format.setChannelCount(1);
  format.setSampleFormat(QAudioFormat::Int16);
  const QAudioDevice device = QMediaDevices::defaultAudioOutput();
  if (device.isNull()) {
    RunOnClock();
    return false;
  }
  source_ = std::make_unique<Source>(std::move(sound));
  source_->all_given = [this] { RunOnClock(); };
  sink_ = std::make_unique<QAudioSink>(device, format);
  sink_->setBufferSize(format.bytesForDuration(std::chrono::microseconds(kAhead).count()));
  sink_->start(source_.get());
  if (sink_->state() == QAudio::StoppedState) {
    Stop();
    RunOnClock();
    return false;
  }
  // Queued, since the sink must not go while it tells its state; with the sink as receiver, nothing of it arrives
  // once it is gone.
  QObject::connect(
      sink_.get(), &QAudioSink::stateChanged, sink_.get(),
      [this](QAudio::State state) {
        if (state == QAudio::StoppedState)
          TellLost();
      },
      Qt::QueuedConnection);
  watched_ms_ = 0;
  since_progress_.start();
  watch_.start();
  return true;
}

void QtSoundOutput::Stop() {
  watch_.stop();
  sink_.reset();
  source_.reset();
  clock_.invalidate();
  clock_start_ms_ = 0;
  heard_ms_ = 0;
}

long QtSoundOutput::Heard() const {
  if (clock_.isValid())
    return clock_start_ms_ + static_cast<long>(clock_.elapsed());
  if (sink_)
    heard_ms_ = std::max(heard_ms_, static_cast<long>(sink_->processedUSecs() / 1000));
  return heard_ms_;
}

void QtSoundOutput::RunOnClock() {
  clock_start_ms_ = Heard();
  clock_.start();
}

void QtSoundOutput::Watch() {
  if (clock_.isValid()) {
    // What the device held is over; until then it keeps the device.
    if (clock_.elapsed() < std::chrono::milliseconds(2 * kAhead).count())
      return;
    watch_.stop();
    sink_.reset();
    return;
  }
  const long heard = Heard();
  if (std::exchange(watched_ms_, heard) != heard)
    since_progress_.start();
  else if (since_progress_.hasExpired(kLostAfter.count()))
    TellLost();
}

void QtSoundOutput::TellLost() {
  RunHandler([this] { Lost(); });
}

} // namespace kelmio

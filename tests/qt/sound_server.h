// A sound server of the test's own, and what is heard of it.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include <array>
#include <cstdint>
#include <vector>

#include "support/temporary_folder.h"

namespace kelmio::test {

/// PulseAudio with one device of 8000 mono samples a second that plays into a pipe. It shares nothing with the
/// user's own server, and ends with the object.
class SoundServer {
public:
  static bool Installed() { return !QStandardPaths::findExecutable("pulseaudio").isEmpty(); }
  SoundServer() = default;
  SoundServer(const SoundServer&) = delete;
  SoundServer& operator=(const SoundServer&) = delete;
  ~SoundServer() { Kill(); }

  QString Address() const { return "unix:" + Place("socket"); }
  QString Pipe() const { return Place("pipe"); }

  void Start() {
    QProcessEnvironment surroundings = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"})
      surroundings.insert(name, Place(""));
    surroundings.remove("PULSE_SERVER");
    server_.setProcessEnvironment(surroundings);
    server_.start("pulseaudio", {"-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
                                 "--load=module-pipe-sink sink_name=desk format=s16le rate=8000 channels=1 "
                                 "use_system_clock_for_timing=yes file=" +
                                     Pipe(),
                                 "--load=module-native-protocol-unix auth-anonymous=1 socket=" + Place("socket")});
  }
  void Kill() {
    server_.kill();
    server_.waitForFinished();
    QFile::remove(Place("socket"));
  }
  bool Runs() const { return server_.state() != QProcess::NotRunning; }
  bool Listens() const { return QFile::exists(Place("socket")); }

private:
  QString Place(const char* name) const { return QString::fromStdString(folder_.Path()) + name; }

  TemporaryFolder folder_;
  QProcess server_;
};

/// Hears what the device plays.
class Listener {
public:
  explicit Listener(const SoundServer& server)
      : pipe_(::open(server.Pipe().toLocal8Bit().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
    Heard();
    heard_.clear(); // what was left for the listener before this one
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() { ::close(pipe_); }

  /// All samples but silence: a sound without zeros comes out whole however late its parts arrived.
  const std::vector<std::int16_t>& Heard() {
    std::array<std::int16_t, 2048> samples; // the device writes whole samples
    ssize_t got = 0;
    while ((got = ::read(pipe_, samples.data(), sizeof samples)) > 0)
      for (std::size_t i = 0; i < static_cast<std::size_t>(got) / sizeof(std::int16_t); ++i)
        if (samples[i] != 0)
          heard_.push_back(samples[i]);
    return heard_;
  }

private:
  const int pipe_;
  std::vector<std::int16_t> heard_;
};

} // namespace kelmio::test

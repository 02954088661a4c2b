// A sound server of the test's own, what is heard of it and what is said to it.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "drivers/sip/loop_of_test.h"
#include "support/temporary_folder.h"

namespace kelmio::test {

using Samples = std::vector<std::int16_t>;

/// Noise without zeros: it comes out whole however late its parts arrived, since silence can be told from it.
inline Samples NoiseWithoutZeros(std::size_t count, std::uint32_t state = 1) {
  Samples samples(count);
  for (std::int16_t& sample : samples) {
    state = state * 1664525U + 1013904223U; // the generator of "Numerical Recipes"
    const auto value = static_cast<std::int16_t>(state >> 18);
    sample = value == 0 ? std::int16_t{1} : value;
  }
  return samples;
}

/// PulseAudio, which shares nothing with the user's own server and ends with the object. The process talks to it
/// from the making of the object on. `Start` names its devices.
class SoundServer {
public:
  SoundServer() { ::setenv("PULSE_SERVER", ("unix:" + Place("socket")).c_str(), 1); }
  SoundServer(const SoundServer&) = delete;
  SoundServer& operator=(const SoundServer&) = delete;
  ~SoundServer() {
    Kill();
    StopHanging();
  }

  static bool Installed() {
    static const bool installed = std::system("command -v pulseaudio pactl >/dev/null") == 0;
    return installed;
  }
  static std::string Loudspeaker(const std::string& pipe, int rate) {
    return "module-pipe-sink sink_name=desk format=s16le channels=1 use_system_clock_for_timing=yes rate=" +
           std::to_string(rate) + " file=" + pipe;
  }
  static std::string Microphone(const std::string& pipe, int rate) {
    return "module-pipe-source source_name=microphone format=s16le channels=1 rate=" + std::to_string(rate) +
           " file=" + pipe;
  }
  std::string Pipe(const std::string& name = "pipe") const { return Place(name); }

  bool Start(const std::vector<std::string>& modules) {
    std::vector<std::string> words{
        "pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1", "--log-level=error"};
    for (const std::string& module : modules)
      words.push_back("--load=" + module);
    words.push_back("--load=module-native-protocol-unix auth-anonymous=1 socket=" + Place("socket"));
    std::vector<char*> arguments;
    for (std::string& word : words)
      arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::vector<std::string> surroundings{"PATH=" + std::string(std::getenv("PATH"))};
    for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"})
      surroundings.push_back(std::string(name) + "=" + folder_.Path());
    std::vector<char*> variables;
    for (std::string& variable : surroundings)
      variables.push_back(variable.data());
    variables.push_back(nullptr);
    if (::posix_spawnp(&process_, "pulseaudio", nullptr, nullptr, arguments.data(), variables.data()) != 0)
      return false;
    return loop.RunUntil([this] { return Listens(); });
  }
  void Kill() {
    if (process_ <= 0)
      return;
    Signal(SIGKILL);
    ::waitpid(process_, nullptr, 0);
    process_ = 0;
    std::filesystem::remove(Place("socket"));
  }
  void Signal(int signal) const { ::kill(process_, signal); }
  /// Gives the running server one command of pactl.
  bool Tell(const std::string& command) const { return std::system(("pactl " + command + " >/dev/null").c_str()) == 0; }

  /// A server in its place that accepts and never answers.
  void Hang() {
    hanging_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = Address();
    ASSERT_EQ(::bind(hanging_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(hanging_, 16), 0);
  }
  void StopHanging() {
    if (hanging_ < 0)
      return;
    ::close(hanging_);
    hanging_ = -1;
    std::filesystem::remove(Place("socket"));
  }

  LoopOfTest loop;

private:
  sockaddr_un Address() const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    Place("socket").copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
  }
  /// The socket's file is there a moment before it takes anybody.
  bool Listens() const {
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = Address();
    const bool taken = ::connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(probe);
    return taken;
  }
  std::string Place(const std::string& name) const { return folder_.Path() + name; }

  TemporaryFolder folder_;
  pid_t process_ = 0;
  int hanging_ = -1;
};

/// Hears what a loudspeaker plays.
class Listener {
public:
  explicit Listener(const std::string& pipe) : pipe_(::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
    Heard();
    heard_.clear(); // what was left for the listener before this one
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() { ::close(pipe_); }

  /// All samples but silence.
  const Samples& Heard() {
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
  Samples heard_;
};

/// How long `work` takes.
inline std::chrono::milliseconds TimeOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

class SoundServerTest : public ::testing::Test {
protected:
  void SetUp() override {
    if (!SoundServer::Installed())
      GTEST_SKIP() << "PulseAudio is not installed";
  }
  bool RunUntil(const std::function<bool()>& done) { return server_.loop.RunUntil(done, std::chrono::seconds{30}); }

  SoundServer server_;
};

} // namespace kelmio::test

// The port at a pseudo terminal, whose other end is the test's.
#include <gmock/gmock.h>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "drivers/voice_modem/serial_port.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using ::testing::HasSubstr;

class SerialPortTest : public testing::Test {
protected:
  SerialPortTest() : modem(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
    ::grantpt(modem);
    ::unlockpt(modem);
    device = ::ptsname(modem);
    lock = folder.Path() + "LCK.." + device.substr(device.rfind('/') + 1);
  }
  ~SerialPortTest() override { Unplug(); }
  void Unplug() {
    if (modem >= 0)
      ::close(modem);
    modem = -1;
  }
  PortResult Open() { return OpenSerialPort(device, folder.Path()); }
  /// A pseudo terminal hands bytes on a little later, from a thread of the kernel's own.
  static bool Comes(int descriptor) {
    pollfd state{descriptor, POLLIN, 0};
    return ::poll(&state, 1, 5000) > 0;
  }
  /// What the modem is sent, once it is `least` bytes or no more comes.
  std::string FromHost(std::size_t least) {
    std::string all;
    char buffer[4096];
    while (all.size() < least && Comes(modem)) {
      const ssize_t got = ::read(modem, buffer, sizeof buffer);
      all.append(buffer, static_cast<std::size_t>(got < 0 ? 0 : got));
    }
    return all;
  }
  test::TemporaryFolder folder;
  int modem;
  std::string device;
  std::string lock;
};

TEST_F(SerialPortTest, CarriesEveryByteEchoesNoneAndTellsWhenTheDeviceIsGone) {
  ASSERT_EQ(::write(modem, "\r\nRING\r\n", 8), 8) << "before the port is open";
  ASSERT_TRUE(Comes(modem)) << "the echo, by which the bytes are known to have arrived";
  const PortResult open = Open();
  ASSERT_NE(open.port, nullptr) << open.text;
  constexpr std::size_t kEchoBytes = 12; // four letters, and each of four line ends as two bytes
  EXPECT_THAT(FromHost(kEchoBytes), HasSubstr("RING"));
  std::string all;
  for (int byte = 0; byte < 256; ++byte)
    all.push_back(static_cast<char>(byte));
  std::string came;
  ASSERT_TRUE(open.port->Read(came));
  EXPECT_EQ(came, "") << "old bytes are dropped, and nothing is no end";
  ASSERT_EQ(::write(modem, all.data(), all.size()), 256);
  while (came.size() < all.size() && Comes(open.port->Descriptor()))
    ASSERT_TRUE(open.port->Read(came));
  EXPECT_EQ(came, all);
  EXPECT_EQ(open.port->Write(all), 256U);
  EXPECT_EQ(FromHost(all.size()), all) << "and no echo of what came";
  termios settings{};
  ::tcgetattr(modem, &settings);
  EXPECT_EQ(::cfgetospeed(&settings), speed_t{B115200});

  Unplug();
  EXPECT_FALSE(open.port->Read(came));
  EXPECT_EQ(open.port->Write("AT\r"), std::nullopt);
  EXPECT_EQ(Open().trouble, PortTrouble::NotThere);
}

TEST_F(SerialPortTest, HasTheDeviceForItself) {
  PortResult open = Open();
  ASSERT_NE(open.port, nullptr) << open.text;
  std::ostringstream holder;
  holder << std::ifstream(lock).rdbuf();
  EXPECT_EQ(std::stol(holder.str()), ::getpid());
  EXPECT_EQ(holder.str().size(), 11U);
  EXPECT_EQ(Open().trouble, PortTrouble::InUse);
  EXPECT_TRUE(std::filesystem::exists(lock)) << "who is refused leaves the lock alone";
  open.port.reset();
  EXPECT_FALSE(std::filesystem::exists(lock));

  std::ofstream(lock) << ::getppid() << "\n";
  EXPECT_THAT(Open().text, HasSubstr("another program"));
  std::ofstream(lock) << "2147483646\n";
  EXPECT_NE(Open().port, nullptr) << "its process is gone";
  EXPECT_NE(OpenSerialPort(device, "/nowhere").port, nullptr);
}

TEST_F(SerialPortTest, TellsMissingRightsFromAMissingModem) {
  if (::geteuid() != 0)
    GTEST_SKIP() << "needs root, to become somebody without rights";
  constexpr uid_t kNobody = 65534;
  ::chmod(device.c_str(), 0620);
  ASSERT_EQ(::seteuid(kNobody), 0);
  const PortResult open = Open();
  ASSERT_EQ(::seteuid(0), 0);
  EXPECT_EQ(open.trouble, PortTrouble::NoRights);
  EXPECT_THAT(open.text, HasSubstr("join the group"));
  EXPECT_EQ(OpenSerialPort(folder.Path() + "no").trouble, PortTrouble::NotThere);
  std::ofstream(folder.Path() + "file") << "no device";
  EXPECT_EQ(OpenSerialPort(folder.Path() + "file", folder.Path()).trouble, PortTrouble::Other);
}

} // namespace
} // namespace kelmio

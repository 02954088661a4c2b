// A line with an account, against a registrar of our own making.
#include <sys/stat.h>

#include "drivers/sip/account_file.h"
#include "drivers/sip/line_fixture.h"
#include "drivers/sip/registrar_peer.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;
using Health = LineStatus::Health;

class SipAccountTest : public SipLineTest {
protected:
  SipAccountTest() {
    settings.times.first_retry = 100ms;
    settings.times.longest_retry = 400ms;
    settings.times.registrar_answer = 600ms;
    settings.times.keep_alive = 200ms;
  }
  SipLine& Line() { return driver->Line(); }
  void Open() {
    driver = std::make_unique<SipDriver>(loop, settings);
    ASSERT_TRUE(Line().Open(reports));
  }
  bool RunUntilHealth(Health health) {
    return loop.RunUntil([&] { return Line().Status().health == health; });
  }
  void Register() {
    Open();
    ASSERT_TRUE(RunUntilHealth(Health::Ready)) << Line().Status().words;
    peer = std::make_unique<SipPeer>(registrar.BoundPort());
  }

  RegistrarPeer registrar;
  SipSettings settings = registrar.Settings();
};

TEST_F(SipAccountTest, RegistersRefreshesAndLeaves) {
  registrar.grants = 2;
  Register();
  EXPECT_EQ(Line().Status().words, "Registered with " + registrar.Address() + " as 4711.");
  EXPECT_TRUE(reports.Logged("SIP account 4711: Registered with"));
  const int asked = registrar.Count("REGISTER");
  EXPECT_TRUE(loop.RunUntil([&] { return registrar.Count("REGISTER") >= asked + 2; }));
  EXPECT_EQ(registrar.Bound().size(), 1U);
  Line().Close();
  EXPECT_TRUE(registrar.Bound().empty());
  EXPECT_EQ(Line().Status().health, Health::Off);
}

} // namespace
} // namespace kelmio

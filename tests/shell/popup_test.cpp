#include <gmock/gmock.h>

#include "shell/frmPopup.h"
#include "support/desk.h"

namespace kelmio::test {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

/// A program with a contact, Jane, who has a photo.
class Alerts : public ::testing::Test {
protected:
  static constexpr std::size_t kOpening = 13; // regions of the opening effect
  static constexpr std::size_t kClosing = 16;

  void SetUp() override {
    const std::string contacts = desk.home.Path() + "Contacts.ini";
    mIni::IniWrite("7", "Name", "Jane Sample", contacts);
    mIni::IniWrite("7", "Phone", "5551234", contacts);
    mIni::IniWrite("8", "Name", "Nobody", contacts);
    mIni::IniWrite("8", "Phone", "unknown", contacts);
    Set("NewCallAlertTime", "4000");
  }
  void Set(const char* name, const char* value) { desk.Store(name, value); }
  void Start() {
    desk.Start();
    for (const char* contact : {"7", "8"})
      std::ofstream(desk.home.Path() + "Photos/" + contact + ".bmp") << "BM";
  }
  std::shared_ptr<ScriptedCall> Call(const char* name, const char* number) {
    auto call = desk.Incoming();
    call->SendCallerID(name, number);
    desk.Run();
    return call;
  }
  frmPopup& Alert(std::size_t index) { return dynamic_cast<frmPopup&>(*desk.windows.beside.at(index).form); }

  Desk desk;
};

TEST_F(Alerts, TellWhoCallsAndLeaveByThemselvesOrByTheirButton) {
  Start();
  Call("Max", "030");
  ASSERT_THAT(desk.windows.beside, SizeIs(1));
  EXPECT_EQ(desk.windows.beside[0].activation, Activation::Leaves);
  frmPopup& alert = Alert(0);
  EXPECT_EQ(alert.Name(), "frmPopup");
  EXPECT_EQ(alert.lblName.Caption.Get(), "Max");
  EXPECT_EQ(alert.lblNumber.Caption.Get(), "030");
  EXPECT_EQ(alert.Left + alert.Width + 50, desk.desktop.width);
  EXPECT_EQ(alert.Top + alert.Height + 50, desk.desktop.height);
  EXPECT_THAT(desk.surface.regions, SizeIs(kOpening));
  desk.Wait(3900);
  EXPECT_TRUE(alert.Visible);
  alert.EffectSpeed = -3;
  alert.EffectSteps = 0;
  desk.Wait(100);
  EXPECT_FALSE(alert.Visible);
  EXPECT_THAT(desk.surface.regions, SizeIs(kOpening + 31)) << "steps that can't be become thirty";

  desk.surface.regions.clear();
  Call("Max", "030");
  Alert(1).imgClose.Click();
  EXPECT_TRUE(Alert(1).QueryUnload());
  EXPECT_TRUE(Alert(1).Visible) << "not inside an event of the window";
  desk.Run();
  EXPECT_FALSE(Alert(1).Visible);
  EXPECT_THAT(desk.surface.regions, SizeIs(kOpening + kClosing));
}

TEST_F(Alerts, ShowThePhotoOfAContactWhoHasOne) {
  Start();
  Call("", "5551234");
  ASSERT_THAT(desk.windows.beside, SizeIs(1));
  auto* alert = dynamic_cast<frmPopupPhoto*>(&Alert(0));
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->lblName.Caption.Get(), "Jane Sample");
  EXPECT_EQ(alert->picPhoto.Picture.Get(), desk.home.Path() + "Photos/7.bmp");

  Call("", "uNKnown");
  EXPECT_EQ(Alert(1).Name(), "frmPopup") << "this text is no number to look up";
}

TEST_F(Alerts, CloseInsideTheirOwnOpening) {
  Set("NewCallAlertTime", "6");
  Start();
  Call("Max", "030");
  const std::shared_ptr<Form> alert = desk.windows.beside.at(0).form;
  EXPECT_FALSE(alert->Visible);
  EXPECT_THAT(desk.surface.regions, SizeIs(2 + kClosing)) << "nothing of the opening after the closing";
  EXPECT_THAT(desk.surface.alphas, IsEmpty());
  alert->Unload();
  EXPECT_THAT(desk.surface.regions, SizeIs(2 + kClosing));
}

TEST_F(Alerts, MayBeTheLastThatHappens) {
  Set("NewCallAlertTime", "20");
  Start();
  // Ends the program in the middle of the closing effect, and lets go of the alert.
  desk.loop.Start(std::chrono::milliseconds(60), [this] { desk.form.Unload(); });
  Call("Max", "030");
  desk.Wait(1000);
  EXPECT_TRUE(desk.loop.QuitAsked());
  EXPECT_THAT(desk.windows.beside, IsEmpty());
}

TEST_F(Alerts, LetTheCallEndMeanwhile) {
  Set("AutoAnswerRingCount", "2");
  Start();
  const auto call = desk.Incoming();
  const auto hang_up = desk.loop.Start(std::chrono::milliseconds(30), [&] { call->FarEndHangsUp(); });
  desk.Ring(*call, 2);
  desk.loop.Stop(hang_up);
  ASSERT_THAT(desk.windows.beside, SizeIs(1));
  EXPECT_EQ(desk.form.Context.CurrentCall, nullptr);
  ASSERT_THAT(desk.Log(), SizeIs(1));
  EXPECT_THAT(desk.Log().front(), ::testing::StartsWith("Unknown|Unknown|"));
  EXPECT_THAT(desk.Messages(), IsEmpty());
}

TEST_F(Alerts, StayAwayWhenTheyAreSwitchedOff) {
  Set("NewCallAlert", "0");
  Start();
  Call("Max", "030");
  EXPECT_THAT(desk.windows.beside, IsEmpty());
}

} // namespace
} // namespace kelmio::test

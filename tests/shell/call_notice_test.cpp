#include <gmock/gmock.h>

#include "support/desk.h"

namespace kelmio::test {
namespace {

/// What stands on the desktop, a line for each notification.
std::vector<std::string> Standing(const Desk& desk) {
  std::vector<std::string> all;
  for (const auto& [key, notification] : desk.notifications.standing) {
    std::string text = notification.title + ": " + notification.text;
    for (const auto& button : notification.buttons)
      text += " [" + button.caption + "]";
    all.push_back(text);
  }
  return all;
}

struct Step {
  std::string what; // '1' to '9' a ring; otherwise a word of `Do`
  std::vector<std::string> standing;
};

/// Does a step with a call, which "new" replaces.
void Do(Desk& desk, std::shared_ptr<ScriptedCall>& call, const std::string& what) {
  const int key = desk.notifications.standing.empty() ? 0 : desk.notifications.standing.rbegin()->first;
  if (what == "new")
    call = desk.Incoming();
  else if (what == "id")
    call->SendCallerID("Jane", "555");
  else if (what == "number")
    call->SendCallerID("", "555");
  else if (what == "end")
    call->FarEndHangsUp();
  else if (what == "off" || what == "on")
    desk.settings.NewCallAlert = what == "on" ? 1 : 0;
  else if (what == "put away")
    desk.notifications.PutAway(key);
  else if (what == "command 400" || what == "command 401")
    desk.form.ExecuteCommand(what.back() == '0' ? kCommandAnswer : kCommandHangUp);
  else if (what.size() == 1)
    call->Ring(what.front() - '0');
  else
    desk.notifications.on_action(key, what);
  desk.Run();
}

TEST(CallNotice, FollowsACallToItsEnd) {
  const std::string ringing = " [Answer] [Hang up]";
  const std::vector<std::string> unknown = {"New call: Unknown" + ringing};
  const std::vector<std::string> known = {"New call: Jane\n555" + ringing};
  const std::vector<std::string> taken = {"New call: Jane\n555 [Hang up]"};
  const std::vector<std::string> missed = {"Missed call: Jane\n555"};
  const std::vector<std::vector<Step>> stories = {
      {{"new", {}}, {"1", unknown}, {"id", known}, {"2", known}, {"end", missed}},
      {{"new", {}}, {"number", {"New call: Unknown\n555" + ringing}}},
      // A call that neither rang nor said whose it is has disturbed nobody.
      {{"new", {}}, {"end", {}}},
      // The machine answers at the fourth ring and records at once, since there is no greeting.
      {{"new", {}}, {"id", known}, {"4", taken}, {"end", {"New message: Jane\n555"}}},
      {{"new", {}}, {"id", known}, {"4", taken}, {"hang-up", {"New message: Jane\n555"}}},
      // Taken or refused by the user, here or elsewhere.
      {{"new", {}}, {"id", known}, {"answer", {}}, {"end", {}}},
      {{"new", {}}, {"id", known}, {"command 400", {}}, {"end", {}}},
      {{"new", {}}, {"id", known}, {"hang-up", {}}},
      {{"new", {}}, {"id", known}, {"command 401", {}}},
      // Put away it stays away while it rings.
      {{"new", {}}, {"1", unknown}, {"put away", {}}, {"id", {}}, {"2", {}}, {"end", missed}},
      {{"off", {}}, {"new", {}}, {"id", {}}, {"1", {}}, {"end", {}}},
      {{"new", {}}, {"id", known}, {"off", known}, {"end", {}}},
      // What was missed stays beside the next call, whose buttons are its own.
      {{"new", {}},
       {"id", known},
       {"end", missed},
       {"new", missed},
       {"1", {missed[0], unknown[0]}},
       {"answer", missed}},
  };
  for (const auto& story : stories) {
    SCOPED_TRACE(testing::PrintToString(&story - stories.data()));
    Desk desk;
    desk.Start();
    std::shared_ptr<ScriptedCall> call;
    for (const Step& step : story) {
      SCOPED_TRACE(step.what);
      Do(desk, call, step.what);
      EXPECT_EQ(Standing(desk), step.standing);
    }
  }
}

TEST(CallNotice, KeepsTheButtonsOfAnOldCallFromTheNextOne) {
  Desk desk;
  desk.Start();
  const auto first = desk.Incoming();
  desk.Ring(*first, 1);
  const int old = desk.notifications.standing.begin()->first;
  first->FarEndHangsUp();
  desk.Run();
  const auto second = desk.Incoming();
  desk.Ring(*second, 1);
  for (const char* action : {"answer", "hang-up"})
    desk.notifications.on_action(old, action);
  EXPECT_EQ(second->Answers(), 0);
  EXPECT_NE(desk.form.Context.CurrentCall, nullptr);
  desk.form.Visible = false;
  desk.notifications.on_action(old, kNotificationClicked);
  EXPECT_TRUE(desk.form.Visible) << "a click leads to the main window at any time";
}

TEST(CallNotice, ShowsThePhotoOfTheContact) {
  Desk desk;
  std::ofstream(desk.home.Path() + "Contacts.ini") << "[C1]\r\nName=Jane\r\nMobile=555\r\n";
  desk.Start();
  const std::string photo = desk.home.Path() + "Photos/C1.bmp";
  std::ofstream(photo) << "bitmap";
  desk.Incoming()->SendCallerID("", "555");
  desk.Run();
  ASSERT_EQ(desk.notifications.standing.size(), 1U);
  EXPECT_EQ(desk.notifications.standing.begin()->second.picture, photo);
  EXPECT_EQ(desk.notifications.standing.begin()->second.text, "Jane\n555");
}

} // namespace
} // namespace kelmio::test

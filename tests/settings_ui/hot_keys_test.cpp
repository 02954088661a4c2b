// The global hot key: its number, and who hears it.
#include <gmock/gmock.h>

#include "fakes/fake_desktop.h"
#include "fakes/fake_loop.h"
#include "settings_ui/mHotKeys.h"

namespace kelmio {
namespace {

struct Window : HotKeyWindow {
  void HotKeyPressed() override { ++shown; }
  int shown = 0;
};

TEST(HotKeys, AnUnregisteredKeyStaysWithTheDesktopAndShowsNothing) {
  FakeLoop loop;
  FakeHotKeys keys;
  int before = 0;
  keys.on_hot_key = [&before](int) { ++before; };
  Window window;
  mHotKeys hot_keys(keys, loop);

  hot_keys.RegisterGlobalHotKey(119, 7, window);
  ASSERT_EQ(keys.calls.size(), 1U);
  const int id = keys.calls[0].id;
  EXPECT_NE(id, 0);
  EXPECT_EQ(keys.calls[0].modifiers, 7);
  EXPECT_EQ(keys.calls[0].key_code, 119);
  keys.on_hot_key(id);
  EXPECT_EQ(window.shown, 1);
  EXPECT_EQ(before, 1); // every key goes on to who was there before

  hot_keys.UnregisterGlobalHotKey(window);
  EXPECT_THAT(keys.unregistered, testing::ElementsAre(0));
  EXPECT_TRUE(keys.registered.contains(id));
  keys.on_hot_key(id);
  EXPECT_EQ(window.shown, 1);
  EXPECT_EQ(before, 2);

  // Once more, twice in a row: the key of the first time is still ours, and one way back is enough.
  keys.taken = true;
  hot_keys.RegisterGlobalHotKey(119, 7, window);
  hot_keys.RegisterGlobalHotKey(119, 7, window);
  keys.on_hot_key(id);
  EXPECT_EQ(window.shown, 2);
  EXPECT_EQ(before, 3);
}

} // namespace
} // namespace kelmio

#include "core/settings.h"

#include <gtest/gtest.h>

#include "core/settings_store.h"
#include "fakes/fake_desktop.h"

namespace kelmio {
namespace {

using namespace std::string_literals;

TEST(SettingsTest, AStoredTextThatDoesNotConvertIsNotTheDefault) {
  FakeRegistryStore store;
  Settings settings;
  const auto put = [&store](const std::string& name, const RegistryValue& value) {
    store.Set(kHkeyLocalMachine, "Software\\Ardelta\\Kelmio\\Settings", name, value);
  };
  put("AutoAnswerRingCount", {registry_type::kText, "four"});
  put("Transparency", {registry_type::kText, ""});
  put("MainStatusBarState", {registry_type::kText, "maybe"});
  put("GreetingFile", {registry_type::kText, ""});
  LoadSettings(settings, store, "/k/");
  EXPECT_EQ(settings.AutoAnswerRingCount, 0);
  EXPECT_EQ(settings.Transparency, 0);
  EXPECT_FALSE(settings.MainStatusBarState);
  EXPECT_EQ(settings.GreetingFile, "");
  // Values of other types are read as far as they can be.
  put("HotKeyCode", {registry_type::kNumber, "\x77\0\0\0"s});
  put("GreetingFile", {registry_type::kBinary, "/x.wav"});
  put("KeyTones", {registry_type::kBinary, "1"});
  LoadSettings(settings, store, "/k/");
  EXPECT_EQ(settings.HotKeyCode, 0x77);
  EXPECT_EQ(settings.GreetingFile, "/x.wav");
  EXPECT_EQ(settings.KeyTones, 0);
}

} // namespace
} // namespace kelmio

#include "core/settings.h"

#include <gtest/gtest.h>

#include "core/settings_store.h"
#include "fakes/fake_desktop.h"

namespace kelmio {
namespace {

using namespace std::string_literals;

class SettingsTest : public testing::Test {
protected:
  void Store(const std::string& name, const RegistryValue& value) {
    store.Set(kHkeyLocalMachine, "Software\\Ardelta\\Kelmio\\Settings", name, value);
  }
  void Load() { LoadSettings(settings, store, "/k/"); }
  FakeRegistryStore store;
  Settings settings;
};

TEST_F(SettingsTest, AMissingKeyGivesTheDefaults) {
  Load();
  EXPECT_EQ(settings.MainWidth, 11685);
  EXPECT_TRUE(settings.MainStatusBarState);
  EXPECT_EQ(settings.CommDeviceID, -1);
  EXPECT_EQ(settings.RecordFormatID, "01000100401F0000803E0000020010000000");
  EXPECT_EQ(settings.PreviewWindowColor, 0xFFFFFF);
  EXPECT_EQ(settings.GreetingFile, "/k/Sound/Greeting.wav");
  EXPECT_EQ(settings.DialerTop, 1000);
}

TEST_F(SettingsTest, AStoredTextThatDoesNotConvertIsNotTheDefault) {
  Store("AutoAnswerRingCount", {registry_type::kText, "four"});
  Store("Transparency", {registry_type::kText, ""});
  Store("MainStatusBarState", {registry_type::kText, "maybe"});
  Store("GreetingFile", {registry_type::kText, ""});
  Load();
  EXPECT_EQ(settings.AutoAnswerRingCount, 0);
  EXPECT_EQ(settings.Transparency, 0);
  EXPECT_FALSE(settings.MainStatusBarState);
  EXPECT_EQ(settings.GreetingFile, "");
}

TEST_F(SettingsTest, ValuesOfOtherTypesStillRead) {
  Store("HotKeyCode", {registry_type::kNumber, "\x77\0\0\0"s});
  Store("GreetingFile", {registry_type::kBinary, "/x.wav"});
  Store("KeyTones", {registry_type::kBinary, "1"});
  Load();
  EXPECT_EQ(settings.HotKeyCode, 0x77);
  EXPECT_EQ(settings.GreetingFile, "/x.wav");
  EXPECT_EQ(settings.KeyTones, 0);
}

TEST_F(SettingsTest, WhatIsSavedReadsBackAsText) {
  Load();
  settings.MainStatusBarState = false;
  settings.MessagesSortBy = -4;
  settings.DialerLastNumber = "*21#";
  for (const char* name : {"MainStatusBarState", "MessagesSortBy", "DialerLastNumber"})
    EXPECT_FALSE(SaveSetting(settings, store, name));
  EXPECT_EQ(RegistryRead(store, kSettingsProduct, kSettingsSection, "MainStatusBarState", {}), RegistryData("False"s));
  Settings again;
  EXPECT_TRUE(ReadSetting(again, store, "MessagesSortBy", "/k/"));
  EXPECT_TRUE(ReadSetting(again, store, "DialerLastNumber", "/k/"));
  EXPECT_EQ(again.MessagesSortBy, -4);
  EXPECT_EQ(again.DialerLastNumber, "*21#");
  EXPECT_FALSE(ReadSetting(again, store, "NoSuchSetting", "/k/"));
}

} // namespace
} // namespace kelmio

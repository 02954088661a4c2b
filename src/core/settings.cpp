#include "core/settings.h"

#include <algorithm>
#include <array>
#include <type_traits>
#include <variant>

#include "core/settings_store.h"
#include "core/text.h"

namespace kelmio {
namespace {

using Member = std::variant<int Settings::*, bool Settings::*, std::string Settings::*>;

enum class DefaultKind { Plain, BelowAppPath };

struct Entry {
  std::string_view name;
  Member member;
  std::string_view default_text;
  DefaultKind default_kind = DefaultKind::Plain;
};

// In the order in which they are read.
const std::array kCatalogue = {
    Entry{"MainLeft", &Settings::MainLeft, "1000"},
    Entry{"MainTop", &Settings::MainTop, "1000"},
    Entry{"MainWidth", &Settings::MainWidth, "11685"},
    Entry{"MainHeight", &Settings::MainHeight, "8085"},
    Entry{"CommandBarsStateString", &Settings::CommandBarsStateString, ""},
    Entry{"DockingPaneStateString", &Settings::DockingPaneStateString, ""},
    Entry{"MainStatusBarState", &Settings::MainStatusBarState, "True"},
    Entry{"SystemStatus", &Settings::SystemStatus, "1"},
    Entry{"AutoAnswerIncoming", &Settings::AutoAnswerIncoming, "1"},
    Entry{"AutoAnswerRingCount", &Settings::AutoAnswerRingCount, "4"},
    Entry{"RecordFormatID", &Settings::RecordFormatID, "01000100401F0000803E0000020010000000"},
    Entry{"RecordFormatDetail", &Settings::RecordFormatDetail, "8.000 kHz; 16 Bit; Mono"},
    Entry{"RecordFormatCodeName", &Settings::RecordFormatCodeName, "PCM"},
    Entry{"CommDeviceID", &Settings::CommDeviceID, "-1"},
    Entry{"AcceptOnOffering", &Settings::AcceptOnOffering, "0"},
    Entry{"AnswerOnOffering", &Settings::AnswerOnOffering, "0"},
    Entry{"StopRecordingAfter", &Settings::StopRecordingAfter, "1"},
    Entry{"MaxRecordingLength", &Settings::MaxRecordingLength, "60"},
    Entry{"RecordingSilenceLength", &Settings::RecordingSilenceLength, "10000"},
    Entry{"MessagesWindowColor", &Settings::MessagesWindowColor, "0"},
    Entry{"MessagesWindowColor1", &Settings::MessagesWindowColor1, "0"},
    Entry{"PreviewWindowColor", &Settings::PreviewWindowColor, "16777215"},
    Entry{"StatusWindowColor", &Settings::StatusWindowColor, "16777215"},
    Entry{"HotKeyCode", &Settings::HotKeyCode, "119"},
    Entry{"HotKeyModifilers", &Settings::HotKeyModifilers, "7"},
    Entry{"HotKeyAccess", &Settings::HotKeyAccess, "1"},
    Entry{"AutoStart", &Settings::AutoStart, "1"},
    Entry{"NewCallAlert", &Settings::NewCallAlert, "1"},
    Entry{"NewCallAlertTime", &Settings::NewCallAlertTime, "6"},
    Entry{"GreetingFile", &Settings::GreetingFile, "Sound/Greeting.wav", DefaultKind::BelowAppPath},
    Entry{"KeyTones", &Settings::KeyTones, "1"},
    Entry{"ContactSortBy", &Settings::ContactSortBy, "2"},
    Entry{"MessagesSortBy", &Settings::MessagesSortBy, "4"},
    Entry{"DefaultVisualTheme", &Settings::DefaultVisualTheme, "2"},
    Entry{"DefaultSystemTheme", &Settings::DefaultSystemTheme, "1"},
    Entry{"Transparency", &Settings::Transparency, "240"},
    // The dialer reads these again when it opens.
    Entry{"DialerLeft", &Settings::DialerLeft, "1000"},
    Entry{"DialerTop", &Settings::DialerTop, "1000"},
    Entry{"DialerLastNumber", &Settings::DialerLastNumber, ""},
};

const Entry* Find(std::string_view name) {
  const auto* found =
      std::find_if(kCatalogue.begin(), kCatalogue.end(), [&](const Entry& entry) { return entry.name == name; });
  return found == kCatalogue.end() ? nullptr : found;
}

void ReadEntry(const Entry& entry, Settings& settings, RegistryStore& store, const std::string& app_path) {
  const std::string default_text =
      (entry.default_kind == DefaultKind::BelowAppPath ? app_path : "") + std::string(entry.default_text);
  const RegistryData data = RegistryRead(store, kSettingsProduct, kSettingsSection, entry.name, default_text);
  const std::string text = TextOf(data);
  // Raw bytes are no number, even where they spell one.
  const std::string convertible = std::holds_alternative<RegistryBytes>(data) ? "" : text;
  if (const auto* number = std::get_if<int Settings::*>(&entry.member))
    settings.*(*number) = NumberOfText(convertible).value_or(0);
  else if (const auto* boolean = std::get_if<bool Settings::*>(&entry.member))
    settings.*(*boolean) = BooleanOfText(convertible).value_or(false);
  else if (const auto* member = std::get_if<std::string Settings::*>(&entry.member))
    settings.*(*member) = text;
}

std::string TextOfEntry(const Entry& entry, const Settings& settings) {
  return std::visit(
      [&](const auto member) -> std::string {
        const auto& value = settings.*member;
        using Value = std::remove_cvref_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, std::string>)
          return value;
        else if constexpr (std::is_same_v<Value, bool>)
          return TextOfBoolean(value);
        else
          return std::to_string(value);
      },
      entry.member);
}

} // namespace

void LoadSettings(Settings& settings, RegistryStore& store, const std::string& app_path) {
  for (const Entry& entry : kCatalogue)
    ReadEntry(entry, settings, store, app_path);
}

bool ReadSetting(Settings& settings, RegistryStore& store, std::string_view name, const std::string& app_path) {
  const Entry* entry = Find(name);
  if (entry == nullptr)
    return false;
  ReadEntry(*entry, settings, store, app_path);
  return true;
}

RegistryOutcome SaveSetting(const Settings& settings, RegistryStore& store, std::string_view name) {
  const Entry* entry = Find(name);
  if (entry == nullptr)
    return std::nullopt;
  return RegistryWrite(store, kSettingsProduct, kSettingsSection, entry->name, TextOfEntry(*entry, settings));
}

} // namespace kelmio

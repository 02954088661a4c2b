#include "settings_ui/capability_report.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace kelmio {

namespace {

constexpr std::size_t kTabWidth = 10;
constexpr std::size_t kTabsToValues = 3;

/// Bits of `PhoneCaps::hook_switch_devices`.
constexpr std::uint32_t kHandset = 1;
constexpr std::uint32_t kSpeaker = 2;
constexpr std::uint32_t kHeadset = 4;

struct BitLine {
  const char* label;
  std::uint32_t bit;
};
constexpr BitLine kSettableLines[] = {{"Hookswitch ", 2}, {"Volume ", 4}, {"Gain ", 1}};
constexpr BitLine kModeLines[] = {{"Off ", 1}, {"Mic ", 2}, {"Speaker ", 4}, {"MicSpeaker ", 8}};

class Report {
public:
  void Line(std::string_view label, std::string_view value) {
    text_ += label;
    text_.append(kTabsToValues - label.size() / kTabWidth, '\t');
    text_ += value;
    text_ += "\r\n";
  }
  void Number(std::string_view label, std::uint32_t word) { Line(label, std::to_string(word)); }
  void YesNo(std::string_view label, bool answer) { Line(label, answer ? "Yes" : "No"); }
  void Heading(std::string_view heading) {
    text_ += "\r\n";
    text_ += heading;
    text_ += "\r\n";
  }
  std::string Text() && { return std::move(text_); }

private:
  std::string text_;
};

/// A block's heading and its lines differ in how the device is written.
void WriteDevice(Report& report, std::string_view heading, const std::string& prefix, bool exists,
                 std::uint32_t settable, std::uint32_t modes) {
  report.YesNo(heading, exists);
  if (!exists)
    return;
  for (const BitLine& line : kSettableLines)
    report.YesNo(prefix + line.label, (settable & line.bit) != 0);
  for (const BitLine& line : kModeLines)
    report.YesNo(prefix + line.label, (modes & line.bit) != 0);
}

void WritePhone(Report& report, const PhoneCaps& phone) {
  report.Line("", "Supported ");
  report.Line("Phone Name:", phone.name);
  report.Number("Ring Modes:", phone.ring_modes);
  report.Number("Button:", phone.buttons);
  const std::uint32_t devices = phone.hook_switch_devices;
  WriteDevice(report, "Handset ", "Handset: ", (devices & kHandset) != 0, phone.settable, phone.handset_modes);
  WriteDevice(report, "Headset ", "HeadSet: ", (devices & kHeadset) != 0, phone.settable, phone.headset_modes);
  WriteDevice(report, "Speaker ", "Speaker: ", (devices & kSpeaker) != 0, phone.settable, phone.speaker_modes);
}

} // namespace

std::string CapabilityReport(const LineCaps& caps) {
  Report report;
  report.Line("Line Name: ", caps.line_name);
  report.Number("Negotiated Version: ", caps.negotiated_version);
  report.Line("Provider Info: ", caps.provider_info);
  report.Line("Switch Info: ", caps.switch_info);
  report.Number("Bearer Modes: ", caps.bearer_modes);
  report.Number("Max Data Rate: ", caps.max_data_rate);
  report.Number("Media Modes: ", caps.media_modes);
  report.Number("Address Type: ", caps.address_type);
  report.Number("Support: ", caps.support);
  report.Number("Address Capability Flags: ", caps.address_capability_flags);
  report.Number("Max active calls: ", caps.max_active_calls);
  report.Number("Max held calls: ", caps.max_held_calls);
  report.Number("Max conferenced calls: ", caps.max_conferenced_calls);
  report.Number("Call State: ", caps.call_states);
  report.Number("Address Features: ", caps.address_features);
  report.Number("Call Features: ", caps.call_features);
  report.Number("Line Features: ", caps.line_features);
  report.Heading("Phone Capabilities:");
  if (caps.phone)
    WritePhone(report, *caps.phone);
  else
    report.Line("", "Not Supported ");
  return std::move(report).Text();
}

} // namespace kelmio

// The device report, compared as a whole.
#include <gmock/gmock.h>

#include "settings_ui/capability_report.h"

namespace kelmio {
namespace {

/// Every word has a value of its own, so that none can stand in the place of another.
LineCaps NumberedCaps() {
  LineCaps caps;
  caps.line_name = "Office";
  caps.provider_info = "Provider";
  caps.switch_info = "Switch";
  caps.negotiated_version = 1;
  caps.bearer_modes = 2;
  caps.max_data_rate = 3;
  caps.media_modes = 4;
  caps.address_type = 5;
  caps.support = 6;
  caps.address_capability_flags = 7;
  caps.max_active_calls = 8;
  caps.max_held_calls = 9;
  caps.max_conferenced_calls = 10;
  caps.call_states = 11;
  caps.address_features = 12;
  caps.call_features = 13;
  caps.line_features = 4294967295U;
  return caps;
}

constexpr const char* kLinePart = "Line Name: \t\tOffice\r\n"
                                  "Negotiated Version: \t1\r\n"
                                  "Provider Info: \t\tProvider\r\n"
                                  "Switch Info: \t\tSwitch\r\n"
                                  "Bearer Modes: \t\t2\r\n"
                                  "Max Data Rate: \t\t3\r\n"
                                  "Media Modes: \t\t4\r\n"
                                  "Address Type: \t\t5\r\n"
                                  "Support: \t\t\t6\r\n"
                                  "Address Capability Flags: \t7\r\n"
                                  "Max active calls: \t\t8\r\n"
                                  "Max held calls: \t\t9\r\n"
                                  "Max conferenced calls: \t10\r\n"
                                  "Call State: \t\t11\r\n"
                                  "Address Features: \t\t12\r\n"
                                  "Call Features: \t\t13\r\n"
                                  "Line Features: \t\t4294967295\r\n"
                                  "\r\n"
                                  "Phone Capabilities:\r\n";

TEST(CapabilityReport, TellsLineAndPhone) {
  LineCaps caps = NumberedCaps();
  EXPECT_EQ(CapabilityReport(caps), std::string(kLinePart) + "\t\t\tNot Supported \r\n");

  caps.phone = PhoneCaps{"Desk set", 21, 22, 1 | 2, 2 | 1, 1 | 4, 15, 2 | 8};
  EXPECT_EQ(CapabilityReport(caps), std::string(kLinePart) + "\t\t\tSupported \r\n"
                                                             "Phone Name:\t\tDesk set\r\n"
                                                             "Ring Modes:\t\t21\r\n"
                                                             "Button:\t\t\t22\r\n"
                                                             "Handset \t\t\tYes\r\n"
                                                             "Handset: Hookswitch \tYes\r\n"
                                                             "Handset: Volume \t\tNo\r\n"
                                                             "Handset: Gain \t\tYes\r\n"
                                                             "Handset: Off \t\tYes\r\n"
                                                             "Handset: Mic \t\tNo\r\n"
                                                             "Handset: Speaker \t\tYes\r\n"
                                                             "Handset: MicSpeaker \tNo\r\n"
                                                             "Headset \t\t\tNo\r\n"
                                                             "Speaker \t\t\tYes\r\n"
                                                             "Speaker: Hookswitch \tYes\r\n"
                                                             "Speaker: Volume \t\tNo\r\n"
                                                             "Speaker: Gain \t\tYes\r\n"
                                                             "Speaker: Off \t\tNo\r\n"
                                                             "Speaker: Mic \t\tYes\r\n"
                                                             "Speaker: Speaker \t\tNo\r\n"
                                                             "Speaker: MicSpeaker \tYes\r\n");

  caps.phone = PhoneCaps{"", 0, 0, 4, 0, 0, 0, 0};
  EXPECT_THAT(CapabilityReport(caps), testing::HasSubstr("Headset \t\t\tYes\r\nHeadSet: Hookswitch \tNo\r\n"));
}

} // namespace
} // namespace kelmio

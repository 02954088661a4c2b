// The help and about windows, and that the manual speaks of this program.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>

#include "core/product.h"
#include "shell/frmAbout.h"
#include "shell/frmHelp.h"
#include "support/desk.h"
#include "support/file_text.h"

namespace kelmio::test {
namespace {

std::vector<std::string> AllOf(const std::string& text, const std::string& pattern) {
  const std::regex expression(pattern);
  std::vector<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match)
    found.push_back((*match)[1]);
  return found;
}

std::string WithoutMarks(std::string caption) {
  caption.erase(std::remove(caption.begin(), caption.end(), '&'), caption.end());
  return caption;
}

void Collect(const std::vector<CommandItem>& items, std::set<std::string>& captions) {
  for (const CommandItem& item : items) {
    captions.insert(WithoutMarks(item.caption));
    Collect(item.items, captions);
  }
}

TEST(ManualTest, EveryLinkAndPictureLeadsSomewhere) {
  const std::string folder = KELMIO_SOURCE_FOLDER "/docs/manual/";
  const std::string page = BytesOf(folder + "Help.html");
  const auto names = AllOf(page, "<a name=\"([^\"]+)\"");
  const std::set<std::string> anchors(names.begin(), names.end());
  EXPECT_EQ(anchors.size(), names.size()) << "a name stands twice";
  const auto links = AllOf(page, "<a href=\"([^\"]+)\"");
  EXPECT_GE(links.size(), 13U);
  for (const std::string& link : links) {
    ASSERT_EQ(link.front(), '#') << link;
    EXPECT_TRUE(anchors.contains(link.substr(1))) << link;
  }
  for (const std::string& picture : AllOf(page, "<img src=\"\\.\\./([^\"]+)\""))
    EXPECT_TRUE(std::filesystem::exists(KELMIO_SOURCE_FOLDER "/src/qt/" + picture)) << picture;
  for (const std::string& sheet : AllOf(page, "rel=\"stylesheet\"[^>]*href=\"([^\"]+)\""))
    EXPECT_TRUE(std::filesystem::exists(folder + sheet)) << sheet;
}

TEST(ManualTest, WhatStandsInBoldIsACommandOrATextOfTheProgram) {
  Desk desk;
  desk.Start();
  std::set<std::string> known = {// Texts of the status bar, and names and choices of lines.
                                 "Waiting for a call",
                                 "Recording call...",
                                 "Programs on this computer",
                                 "The local network",
                                 "Everyone",
                                 "Off",
                                 "Automatic",
                                 "Preferred",
                                 "Required",
                                 "SIP account (not set up yet)"};
  Collect(desk.form.CommandBars1.MenuBar().items, known);
  Collect(desk.form.CommandBars1.ToolBars().front().items, known);
  for (std::string text : AllOf(BytesOf(KELMIO_SOURCE_FOLDER "/docs/manual/Help.html"), "<b>([^<]+)</b>")) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    EXPECT_TRUE(known.contains(text)) << text;
  }
}

TEST(ManualTest, LiesBesideTheProgramOrInsideIt) {
  TemporaryFolder home;
  std::filesystem::create_directories(home.Path() + "share/kelmio/manual");
  const std::string program = home.Path() + "bin/kelmio";
  EXPECT_EQ(ManualAddress(program), "qrc:/manual/Help.html");
  WriteBytes(home.Path() + "share/kelmio/manual/Help.html", "<p>");
  EXPECT_EQ(ManualAddress(program), "file://" + home.Path() + "share/kelmio/manual/Help.html");
}

struct HelpCommands : ::testing::Test {
  Desk desk;
  HelpCommands() { desk.Start(); }
};

TEST_F(HelpCommands, TheWebsiteIsHandedToTheDesktop) {
  desk.form.ExecuteCommand(command::kWebsite);
  ASSERT_EQ(desk.link_opener.requests.size(), 1U);
  EXPECT_EQ(desk.link_opener.requests[0].file, product::Website());
  EXPECT_EQ(desk.link_opener.requests[0].verb, "Open");
}

TEST_F(HelpCommands, HelpStandsBesideTheOthersWithButtonsThatKnowTheWay) {
  desk.form.ExecuteCommand(command::kHelp);
  ASSERT_EQ(desk.windows.beside.size(), 1U);
  EXPECT_EQ(desk.windows.beside[0].activation, Activation::Takes);
  auto& help = dynamic_cast<frmHelp&>(*desk.windows.beside[0].form);
  const auto enabled = [&] {
    return std::string(help.cmdBack.Enabled ? "back " : "") + (help.cmdForward.Enabled ? "forward " : "") +
           (help.cmdStop.Enabled ? "stop" : "");
  };
  EXPECT_EQ(enabled(), "stop") << "the page isn't on show yet";
  help.brwHelp.DocumentComplete("Kelmio Help");
  EXPECT_EQ(help.Caption.Get(), "Kelmio Help");
  EXPECT_EQ(enabled(), "");
  const std::string home = help.brwHelp.Address();
  help.brwHelp.Navigate(home + "#keys");
  help.brwHelp.DocumentComplete("Kelmio Help");
  EXPECT_EQ(enabled(), "back ");
  help.cmdBack.Click();
  help.brwHelp.DocumentComplete("Kelmio Help");
  EXPECT_EQ(enabled(), "forward ");
  help.cmdForward.Click();
  help.cmdStop.Click();
  EXPECT_EQ(help.brwHelp.Address(), home);
  help.brwHelp.Navigate("https://example.org/");
  EXPECT_EQ(desk.link_opener.requests.back().file, "https://example.org/");
  int prints = 0;
  int setups = 0;
  help.brwHelp.on_print = [&] { ++prints; };
  help.brwHelp.on_page_setup = [&] { ++setups; };
  help.cmdPrint.Click();
  help.cmdPageSetup.Click();
  EXPECT_EQ(prints + 10 * setups, 11);
  help.EscapePressed();
  EXPECT_FALSE(help.Visible);
}

TEST_F(HelpCommands, AboutTellsTheVersionAndLeadsToTheMakers) {
  desk.settings.DefaultSystemTheme = 3;
  desk.windows.use = [&](Form& form) {
    auto& about = dynamic_cast<frmAbout&>(form);
    EXPECT_THAT(about.lblVersion.Caption.Get(), ::testing::MatchesRegex("Version [0-9]+\\.[0-9]+\\.[0-9]+"));
    EXPECT_EQ(about.jcForms1.Colors(true), kFrameThemes[1]) << "silver";
    about.lblWebsite.Click();
    about.lblContact.Click();
    about.cmdOK.Click();
    EXPECT_FALSE(about.Visible);
  };
  desk.form.ExecuteCommand(command::kAbout);
  ASSERT_EQ(desk.link_opener.requests.size(), 2U);
  EXPECT_EQ(desk.link_opener.requests[0].file, product::Website());
  EXPECT_EQ(desk.link_opener.requests[1].file, std::string("mailto:") + product::Contact());
}

} // namespace
} // namespace kelmio::test

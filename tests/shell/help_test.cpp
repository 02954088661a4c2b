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

TEST(HelpCommands, AboutLeadsToTheMakers) {
  Desk desk;
  desk.Start();
  desk.windows.use = [&](Form& form) {
    auto& about = dynamic_cast<frmAbout&>(form);
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

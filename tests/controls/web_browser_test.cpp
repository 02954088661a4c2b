#include "controls/web_browser.h"

#include <gmock/gmock.h>

namespace kelmio {
namespace {

struct Browser : WebBrowser {
  Browser() {
    ExternalLink = [this](const std::string& address) { left_for = address; };
  }
  /// Goes to a page that comes on show.
  void Visit(const std::string& address) {
    Navigate(address);
    DocumentComplete(address);
  }
  std::string Buttons() const {
    return std::string(CanGoBack() ? "back " : "") + (CanGoForward() ? "forward " : "") + (Busy() ? "stop" : "");
  }
  std::string left_for;
};

TEST(WebBrowserTest, GoesBackAndForwardUntilANewWayIsTaken) {
  Browser browser;
  browser.SetHome("file:///h");
  browser.GoBack();
  browser.Refresh();
  EXPECT_EQ(browser.Buttons(), "") << "nothing happens before the first page";
  browser.GoHome();
  browser.DocumentComplete("Home");
  browser.Visit("file:///h#a");
  browser.Visit("file:///h#b");
  browser.GoBack();
  browser.DocumentComplete("Home");
  EXPECT_EQ(browser.Address(), "file:///h#a");
  EXPECT_EQ(browser.Buttons(), "back forward ");
  browser.GoForward();
  EXPECT_EQ(browser.Address(), "file:///h#b");
  browser.GoBack();
  browser.GoBack();
  browser.DocumentComplete("Home");
  EXPECT_EQ(browser.Buttons(), "forward ");
  browser.Visit("file:///h#c");
  EXPECT_EQ(browser.Buttons(), "back ");
  browser.Visit("file:///h#c");
  browser.GoBack();
  EXPECT_EQ(browser.Address(), "file:///h") << "the same place twice is one step";
}

TEST(WebBrowserTest, StopStaysOnThePageThatIsOnShow) {
  Browser browser;
  browser.Visit("file:///a");
  browser.Navigate("file:///b");
  EXPECT_EQ(browser.Buttons(), "back stop");
  browser.Stop();
  EXPECT_EQ(browser.Address(), "file:///a");
  EXPECT_EQ(browser.Buttons(), "forward ");
}

TEST(WebBrowserTest, TheWebIsLeftToOthers) {
  Browser browser;
  browser.Visit("file:///a");
  for (const char* address : {"https://kelmio.example.org/", "http://example.org", "mailto:jane@example.org"}) {
    browser.Navigate(address);
    EXPECT_EQ(browser.left_for, address);
    EXPECT_EQ(browser.Address(), "file:///a");
    EXPECT_FALSE(browser.Busy());
  }
}

} // namespace
} // namespace kelmio

#include "controls/web_browser.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelmio {

namespace {

constexpr std::array<std::string_view, 3> kElsewhere = {"http:", "https:", "mailto:"};

bool LeadsElsewhere(std::string_view address) {
  return std::any_of(kElsewhere.begin(), kElsewhere.end(),
                     [&](std::string_view scheme) { return address.substr(0, scheme.size()) == scheme; });
}

} // namespace

const std::string& WebBrowser::Address() const {
  static const std::string kNowhere;
  return visited_.empty() ? kNowhere : visited_[here_];
}

void WebBrowser::Navigate(const std::string& address) {
  if (address.empty())
    return;
  if (LeadsElsewhere(address))
    return ExternalLink(address);
  if (address == Address())
    return Load(); // the same place again: the view goes to its anchor
  if (!visited_.empty())
    visited_.resize(here_ + 1);
  visited_.push_back(address);
  Go(visited_.size() - 1);
}

void WebBrowser::GoHome() {
  Navigate(home_);
}

void WebBrowser::GoBack() {
  if (CanGoBack())
    Go(here_ - 1);
}

void WebBrowser::GoForward() {
  if (CanGoForward())
    Go(here_ + 1);
}

void WebBrowser::Stop() {
  if (!busy_)
    return;
  busy_ = false;
  here_ = std::min(shown_, visited_.size() - 1);
  Changed();
  CommandStateChange();
}

void WebBrowser::Refresh() {
  if (visited_.empty())
    return;
  ++loads_;
  Load();
}

void WebBrowser::Go(std::size_t place) {
  here_ = place;
  Load();
}

void WebBrowser::Load() {
  busy_ = true;
  Changed();
  CommandStateChange();
}

void WebBrowser::DocumentComplete(const std::string& title) {
  busy_ = false;
  shown_ = here_;
  Title = title;
  CommandStateChange();
}

} // namespace kelmio

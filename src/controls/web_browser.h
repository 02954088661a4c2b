// A small browser for the program's own pages.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "controls/control.h"

namespace kelmio {

/// It knows where the user is and was; a view loads and shows the pages. An address is that of a file ("file:" and its
/// path, or "qrc:" for a page inside the program) with "#" and an anchor, if any. User interface thread only.
class WebBrowser : public Control {
public:
  /// Title of the page on show.
  Property<std::string> Title{*this};

  /// Goes to a page. One of the web, or a mail address, is left to `ExternalLink`.
  void Navigate(const std::string& address);
  void GoHome();
  void GoBack();
  void GoForward();
  /// Gives a page up that isn't on show yet, and goes back to the one before it.
  void Stop();
  /// Loads the page anew from its file.
  void Refresh();
  void Print() const { on_print(); }
  void PageSetup() const { on_page_setup(); }

  /// The page that `GoHome` leads to. The first `Navigate` doesn't set it.
  void SetHome(std::string address) { home_ = std::move(address); }
  /// The page that is, or is about to be, on show; empty before the first.
  const std::string& Address() const;
  bool CanGoBack() const { return here_ > 0; }
  bool CanGoForward() const { return here_ + 1 < visited_.size(); }
  /// A page was asked for and isn't on show yet.
  bool Busy() const { return busy_; }

  /// Something that enables the buttons, or the title, has changed.
  std::function<void()> CommandStateChange = [] {};
  std::function<void(const std::string& address)> ExternalLink = [](const std::string&) {};

  // For the view.

  /// How often `Refresh` was called: a view that sees another number loads the page anew.
  int Loads() const { return loads_; }
  /// The page is on show.
  void DocumentComplete(const std::string& title);
  std::function<void()> on_print = [] {};
  std::function<void()> on_page_setup = [] {};

private:
  void Load();
  void Go(std::size_t place);

  std::string home_;
  std::vector<std::string> visited_;
  std::size_t here_ = 0;
  std::size_t shown_ = 0; // the last page that was on show
  int loads_ = 0;
  bool busy_ = false;
};

} // namespace kelmio

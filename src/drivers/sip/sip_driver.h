// Brings the SIP lines into the house.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "drivers/lines_file.h"
#include "drivers/sip/sip_config_dialog.h"
#include "drivers/sip/sip_line.h"
#include "drivers/sip/sip_settings.h"
#include "platform/event_loop.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// The accounts of a file in their order, then the line for direct calls, then one line by which the next account is
/// entered. User interface thread only; `loop` outlives the driver and its lines.
class SipDriver : public LineDriver {
public:
  /// One line, that its user can't set up.
  SipDriver(EventLoop& loop, SipSettings settings);

  /// The lines of `file`, to which the dialog's choices go. `dialog` outlives the driver and its lines.
  SipDriver(EventLoop& loop, LinesFile file, SipConfigDialog& dialog);
  ~SipDriver() override;

  std::vector<std::shared_ptr<LineDevice>> Lines() override;
  void Watch(std::function<void()> changed) override { changed_ = std::move(changed); }

  /// The line for direct calls, or the only one, with what only a SIP line has.
  SipLine& Line() { return *line_; }

private:
  struct Account {
    int number = 0;
    std::shared_ptr<SipLine> line;
  };

  void Add(int number);
  void Insert(Account account);
  void Arrange();
  void AccountsChanged();

  EventLoop& loop_;
  std::optional<LinesFile> file_;
  SipConfigDialog* dialog_ = nullptr;
  std::shared_ptr<SipLine> line_;
  std::vector<Account> accounts_; // by their numbers; one of them isn't set up
  // Lines that are listed no more, but that someone may still have open.
  std::vector<Account> retired_;
  std::function<void()> changed_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace kelmio

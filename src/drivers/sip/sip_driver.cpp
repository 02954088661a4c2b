#include "drivers/sip/sip_driver.h"

#include <algorithm>
#include <utility>

#include "drivers/sip/account_file.h"

namespace kelmio {

SipDriver::SipDriver(EventLoop& loop, SipSettings settings)
    : loop_(loop), line_(std::make_shared<SipLine>(loop, std::move(settings))) {}

SipDriver::SipDriver(EventLoop& loop, LinesFile file, SipConfigDialog& dialog)
    : SipDriver(loop, ReadSipSettings(file)) {
  line_->SetConfigDialog(dialog, file);
  file_ = std::move(file);
  dialog_ = &dialog;
  for (const int number : AccountNumbers(*file_))
    Add(number);
  Arrange();
}

SipDriver::~SipDriver() {
  // The lines may live on in other hands.
  for (const Account& account : accounts_)
    account.line->SetAccount(account.number, nullptr);
  for (const Account& account : retired_)
    account.line->SetAccount(account.number, nullptr);
}

void SipDriver::Add(int number) {
  auto line = std::make_shared<SipLine>(loop_, ReadAccount(*file_, number));
  line->SetConfigDialog(*dialog_, *file_);
  line->SetAccount(number, [this] { AccountsChanged(); });
  Insert({number, std::move(line)});
}

void SipDriver::Insert(Account account) {
  const auto place = std::find_if(accounts_.begin(), accounts_.end(),
                                  [&](const Account& other) { return other.number > account.number; });
  accounts_.insert(place, std::move(account));
}

void SipDriver::Arrange() {
  const auto is_empty = [](const Account& account) { return !account.line->IsSetUp(); };
  // One that is listed no more may have been set up all the same, in a window that was open meanwhile.
  const auto back = std::stable_partition(retired_.begin(), retired_.end(), is_empty);
  const std::vector<Account> returning(back, retired_.end());
  retired_.erase(back, retired_.end());
  for (const Account& account : returning)
    Insert(account);
  const auto first = std::find_if(accounts_.begin(), accounts_.end(), is_empty);
  if (first == accounts_.end()) {
    int number = 1;
    const auto taken = [&](const Account& account) { return account.number == number; };
    while (std::any_of(accounts_.begin(), accounts_.end(), taken) ||
           std::any_of(retired_.begin(), retired_.end(), taken))
      ++number;
    Add(number);
    return;
  }
  const auto rest = std::stable_partition(std::next(first), accounts_.end(), std::not_fn(is_empty));
  retired_.insert(retired_.end(), rest, accounts_.end());
  accounts_.erase(rest, accounts_.end());
}

void SipDriver::AccountsChanged() {
  Arrange();
  loop_.Post([this, alive = std::weak_ptr(alive_)] {
    if (alive.lock() && changed_)
      changed_();
  });
}

std::vector<std::shared_ptr<LineDevice>> SipDriver::Lines() {
  std::vector<std::shared_ptr<LineDevice>> lines;
  for (const Account& account : accounts_)
    if (account.line->IsSetUp())
      lines.push_back(account.line);
  lines.push_back(line_);
  for (const Account& account : accounts_)
    if (!account.line->IsSetUp())
      lines.push_back(account.line);
  return lines;
}

} // namespace kelmio

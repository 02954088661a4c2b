// The notification that goes with an incoming call.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "core/settings.h"
#include "messages/contact_card.h"
#include "platform/notifications.h"
#include "telephony/call_watcher.h"

namespace kelmio {

/// Raised at the first ring or with the caller's name, whichever comes first, and kept up to date. Once the call is
/// over the same notification tells of a missed call or a new message; it goes when the user has taken the call or
/// refused it. The next call gets a notification of its own, so that what was missed stays to be seen. `NewCallAlert`
/// of the settings turns it on. User interface thread only.
class CallNotice : public CallWatcher {
public:
  struct House {
    const Settings& settings;
    ContactLookup contacts;
    Notifications& notifications;
    std::function<void(int command)> execute; // a command of the main window
    std::function<void()> show_window;        // brings the main window up
  };
  explicit CallNotice(House house);
  CallNotice(const CallNotice&) = delete;
  CallNotice& operator=(const CallNotice&) = delete;
  ~CallNotice() override;

  void CallBegan(const CallRef& call) override;
  void CallRings(const CallRef& call) override;
  void CallerKnown(const CallRef& call, const std::string& name, const std::string& number) override;
  void CallTaken(const CallRef& call, bool by_machine) override;
  void MessageBegun(const CallRef& call) override;
  void CallDropped(const CallRef& call) override;
  void CallOver(const CallRef& call) override;

private:
  /// Of the call that is followed.
  enum class Stage { None, Begun, Rings, Machine };

  bool Follows(const CallRef& call) const;
  /// Shows the call as it stands, unless the user has put its notification away.
  void Announce();
  void Show(Notification::Kind kind, const char* title);
  void Withdraw();
  /// Nobody is followed any more.
  void Forget();
  void Act(int key, const std::string& action);

  House house_;
  std::weak_ptr<TAPICall> call_;
  Stage stage_ = Stage::None;
  int key_ = 0; // of the call's notification
  std::string name_;
  std::string number_;
  bool shown_ = false;    // the notification stands, as far as is known
  bool put_away_ = false; // the user has closed it
  bool dropped_ = false;
  bool has_message_ = false;
};

} // namespace kelmio

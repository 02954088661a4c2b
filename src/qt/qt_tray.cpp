#include "qt/qt_tray.h"

#include <QMenu>
#include <QSystemTrayIcon>

#include "controls/command_bars.h"
#include "qt/command_icons.h"
#include "qt/handler_guard.h"
#include "qt/item_actions.h"
#include "qt/units.h"

namespace kelmio {

namespace {

/// How often the tray is looked for, in milliseconds: the toolkit doesn't tell when it goes or comes.
constexpr int kWatchMs = 3000;

} // namespace

QtTray::QtTray() {
  watch_.setInterval(kWatchMs);
  watch_.setTimerType(Qt::VeryCoarseTimer);
  QObject::connect(&watch_, &QTimer::timeout, &watch_, [this] { Watch(); });
}

QtTray::~QtTray() = default;

bool QtTray::Create(const std::string& tool_tip) {
  Remove();
  tool_tip_ = ToText(tool_tip);
  watch_.start();
  if (QSystemTrayIcon::isSystemTrayAvailable())
    MakeIcon();
  return Created();
}

void QtTray::Remove() {
  watch_.stop();
  DropIcon();
}

bool QtTray::Created() const {
  return icon_ != nullptr && QSystemTrayIcon::isSystemTrayAvailable();
}

void QtTray::Watch() {
  const bool available = QSystemTrayIcon::isSystemTrayAvailable();
  if (available == (icon_ != nullptr))
    return;
  // Made anew rather than kept: an icon whose tray has died doesn't find its way into the next one everywhere.
  if (available)
    MakeIcon();
  else
    DropIcon();
  RunHandler([&] {
    if (const auto& told = available ? on_back : on_gone)
      told();
  });
}

void QtTray::MakeIcon() {
  popup_ = std::make_unique<QMenu>();
  popup_actions_ = std::make_unique<ItemActions>(*popup_, [this](int id) {
    if (on_command)
      on_command(id);
  });
  QObject::connect(popup_.get(), &QMenu::aboutToShow, popup_.get(), [this] { FillPopup(); });
  FillPopup(); // some trays ask for the menu once and look at it before they open it

  icon_ = std::make_unique<QSystemTrayIcon>(ProgramIcon());
  icon_->setToolTip(tool_tip_);
  icon_->setContextMenu(popup_.get());
  QSystemTrayIcon* icon = icon_.get();
  QObject::connect(icon, &QSystemTrayIcon::activated, icon, [this, icon](QSystemTrayIcon::ActivationReason reason) {
    // Only an embedded icon has a place on the screen, and only that kind tells a double click from a click.
    const bool tells_double_clicks = !icon->geometry().isEmpty();
    const bool asked =
        reason == QSystemTrayIcon::DoubleClick || (reason == QSystemTrayIcon::Trigger && !tells_double_clicks);
    if (asked && on_double_click)
      RunHandler(on_double_click);
  });
  icon_->show();
}

void QtTray::DropIcon() {
  icon_.reset();
  popup_actions_.reset();
  popup_.reset();
}

void QtTray::FillPopup() {
  RunHandler([this] {
    if (on_popup)
      popup_actions_->Show(on_popup().items);
  });
}

} // namespace kelmio

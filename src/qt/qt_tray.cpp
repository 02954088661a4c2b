#include "qt/qt_tray.h"

#include <QMenu>

#include <utility>

#include "controls/command_bars.h"
#include "qt/command_icons.h"
#include "qt/handler_guard.h"
#include "qt/item_actions.h"
#include "qt/units.h"

namespace kelmio {

class TrayPopup : public QMenu {
public:
  explicit TrayPopup(ItemActions::Execute execute) : actions(*this, std::move(execute)) {}
  ItemActions actions;
};

namespace {

// Messages of the Windows API.
constexpr std::uint32_t kLeftButtonDown = 513;
constexpr std::uint32_t kLeftDoubleClick = 515;
constexpr std::uint32_t kRightButtonDown = 516;
constexpr std::uint32_t kMiddleButtonDown = 519;
constexpr std::uint32_t kBalloonClicked = 1029;

constexpr int kBalloonMs = 10000;

/// An object of the toolkit may be dropped by a handler of its own.
template <class Object> void DropLater(std::unique_ptr<Object>& object) {
  if (object != nullptr)
    object.release()->deleteLater();
}

} // namespace

QtTray::QtTray() : host_([this] { HostChanged(); }) {}

QtTray::~QtTray() = default;

bool QtTray::Add(const TrayRecord& record) {
  DropIcon();
  host_.Start();
  added_ = true;
  if (!host_.Identity().isEmpty())
    MakeIcon(record);
  return Created();
}

void QtTray::Modify(unsigned flags, const TrayRecord& record) {
  if (icon_ == nullptr)
    return;
  if ((flags & tray_flag::kTip) != 0)
    icon_->setToolTip(ToText(record.tip));
  if ((flags & tray_flag::kIcon) != 0)
    icon_->setVisible(record.icon != kNoIcon);
  if ((flags & tray_flag::kInfo) != 0 && !(record.info.empty() && record.info_title.empty()))
    icon_->showMessage(ToText(record.info_title), ToText(record.info),
                       static_cast<QSystemTrayIcon::MessageIcon>(record.info_flags),
                       record.info_time_out_ms > 0 ? record.info_time_out_ms : kBalloonMs);
}

void QtTray::Delete() {
  added_ = false;
  DropIcon();
}

bool QtTray::Created() const {
  return icon_ != nullptr && !host_.Identity().isEmpty();
}

std::optional<ScreenRect> QtTray::IconRect() const {
  if (!Created() || !host_.EmbedsIcons() || !icon_->isVisible())
    return std::nullopt;
  const QRect place = icon_->geometry();
  if (place.isEmpty())
    return std::nullopt;
  return ScreenRect{place.x(), place.y(), place.x() + place.width(), place.y() + place.height()};
}

bool QtTray::ShowsBalloons() const {
  return icon_ != nullptr && QSystemTrayIcon::supportsMessages();
}

void QtTray::ShowPopup(const CommandBar& popup) {
  OpenPopup(popup, nullptr, [this](int command) { Execute(command); });
}

void QtTray::HostChanged() {
  if (!added_)
    return;
  // Dropped and not kept: an icon whose tray has died doesn't find its way into the next one everywhere.
  DropIcon();
  RunHandler([this] {
    if (const auto told = host_.Identity().isEmpty() ? on_gone : on_restarted)
      told();
  });
}

void QtTray::MakeIcon(const TrayRecord& record) {
  icon_ = std::make_unique<QSystemTrayIcon>(ProgramIcon());
  if (!host_.EmbedsIcons())
    MakePopup();
  QObject::connect(icon_.get(), &QSystemTrayIcon::activated, icon_.get(),
                   [this](QSystemTrayIcon::ActivationReason reason) { Activated(reason); });
  QObject::connect(icon_.get(), &QSystemTrayIcon::messageClicked, icon_.get(), [this] { Tell(kBalloonClicked); });
  Modify(tray_flag::kIcon | tray_flag::kTip | tray_flag::kInfo, record);
}

void QtTray::MakePopup() {
  popup_ = std::make_unique<TrayPopup>([this](int command) { Execute(command); });
  QObject::connect(popup_.get(), &QMenu::aboutToShow, popup_.get(), [this] { FillPopup(); });
  FillPopup(); // some trays ask for the menu once and look at it before they open it
  icon_->setContextMenu(popup_.get());
}

void QtTray::DropIcon() {
  if (icon_ != nullptr) {
    icon_->hide();
    icon_->disconnect();
  }
  DropLater(icon_);
  DropLater(popup_);
}

void QtTray::FillPopup() {
  RunHandler([this] {
    if (on_popup)
      popup_->actions.Show(on_popup().items);
  });
}

void QtTray::Activated(QSystemTrayIcon::ActivationReason reason) {
  switch (reason) {
  case QSystemTrayIcon::Trigger:
    Tell(host_.EmbedsIcons() ? kLeftButtonDown : kLeftDoubleClick);
    break;
  case QSystemTrayIcon::DoubleClick:
    Tell(kLeftDoubleClick);
    break;
  case QSystemTrayIcon::Context:
    Tell(kRightButtonDown);
    break;
  case QSystemTrayIcon::MiddleClick:
    Tell(kMiddleButtonDown);
    break;
  case QSystemTrayIcon::Unknown:
    break;
  }
}

void QtTray::Tell(std::uint32_t message) {
  RunHandler([&] {
    if (const auto told = on_message)
      told(message);
  });
}

void QtTray::Execute(int command) {
  RunHandler([&] {
    if (const auto run = on_command)
      run(command);
  });
}

} // namespace kelmio

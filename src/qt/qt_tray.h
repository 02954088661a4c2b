// The icon in the notification area.
#pragma once

#include <QSystemTrayIcon>

#include <functional>
#include <memory>

#include "platform/tray.h"
#include "qt/tray_host.h"

namespace kelmio {

class TrayPopup;

/// Through the desktop's status notifier, or the older embedded icons of X11. Trays of the first kind draw the popup
/// themselves, don't tell double clicks, where a plain click counts as one, and don't say where the icon stands. The
/// desktop's balloon closes by itself. User interface thread only.
class QtTray : public Tray {
public:
  QtTray();
  ~QtTray() override;

  bool Add(const TrayRecord& record) override;
  void Modify(unsigned flags, const TrayRecord& record) override;
  void Delete() override;
  bool Created() const override;
  std::optional<ScreenRect> IconRect() const override;
  std::uint32_t HostWindow() const override { return host_.Window(); }
  bool ShowsBalloons() const override;
  void ShowPopup(const CommandBar& popup) override;

private:
  void HostChanged();
  void MakeIcon(const TrayRecord& record);
  void DropIcon();
  void MakePopup();
  void FillPopup();
  void Activated(QSystemTrayIcon::ActivationReason reason);
  void Tell(std::uint32_t message);
  void Execute(int command);

  TrayHost host_;
  bool added_ = false;
  std::unique_ptr<TrayPopup> popup_;      // for trays that draw it
  std::unique_ptr<QSystemTrayIcon> icon_; // before its menu in the order of ending
};

} // namespace kelmio

// The icon in the notification area.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

#include "platform/desktop.h"

class QMenu;
class QSystemTrayIcon;

namespace kelmio {

class ItemActions;

/// Through the desktop's status notifier, or the older embedded icons of X11. Trays of the first kind don't tell
/// double clicks, there a plain click counts as one. User interface thread only.
class QtTray : public Tray {
public:
  QtTray();
  ~QtTray() override;

  bool Create(const std::string& tool_tip) override;
  void Remove() override;
  bool Created() const override;

private:
  void Watch();
  void MakeIcon();
  void DropIcon();
  void FillPopup();

  QTimer watch_;
  QString tool_tip_;
  std::unique_ptr<QMenu> popup_;
  std::unique_ptr<ItemActions> popup_actions_;
  std::unique_ptr<QSystemTrayIcon> icon_; // before its menu in the order of ending
};

} // namespace kelmio

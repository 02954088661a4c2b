#include "controls/command_bars.h"

namespace kelmio {

namespace {

CommandItem* FindIn(std::vector<CommandItem>& items, int id) {
  for (CommandItem& item : items) {
    if (item.id == id)
      return &item;
    if (CommandItem* found = FindIn(item.items, id))
      return found;
  }
  return nullptr;
}

CommandItem* FindInToolBars(CommandBars& bars, int id) {
  for (CommandBar& bar : bars.ToolBars())
    if (CommandItem* found = bar.Find(id))
      return found;
  return nullptr;
}

CommandItem* Mark(CommandItem* item, bool CommandItem::*flag, bool value, const Control* owner) {
  if (item != nullptr && item->*flag != value) {
    item->*flag = value;
    if (owner != nullptr)
      owner->Changed();
  }
  return item;
}

} // namespace

CommandItem* CommandBar::Find(int id) {
  return id == 0 ? nullptr : FindIn(items, id);
}

CommandItem* EnableMenuButton(CommandBars& bars, int id, bool enabled) {
  return Mark(bars.MenuBar().Find(id), &CommandItem::enabled, enabled, &bars);
}

CommandItem* CheckMenuButton(CommandBars& bars, int id, bool checked) {
  return Mark(bars.MenuBar().Find(id), &CommandItem::checked, checked, &bars);
}

CommandItem* EnableToolbarButton(CommandBars& bars, int id, bool enabled) {
  return Mark(FindInToolBars(bars, id), &CommandItem::enabled, enabled, &bars);
}

CommandItem* CheckToolbarButton(CommandBars& bars, int id, bool checked) {
  return Mark(FindInToolBars(bars, id), &CommandItem::checked, checked, &bars);
}

CommandItem* EnablePopupButton(CommandBar& popup, int id, bool enabled) {
  return Mark(popup.Find(id), &CommandItem::enabled, enabled, nullptr);
}

CommandItem* CheckPopupButton(CommandBar& popup, int id, bool checked) {
  return Mark(popup.Find(id), &CommandItem::checked, checked, nullptr);
}

} // namespace kelmio

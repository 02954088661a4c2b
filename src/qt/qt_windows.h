// Modal windows by their forms.
#pragma once

#include <map>
#include <string>

#include "platform/dialogs.h"

namespace kelmio {

/// There is one window of a name at a time, so that the tray's menu can't open a second contact list over the first:
/// the one that is being shown already is brought to the front, and `ShowModal` returns at once. The end of the
/// program's loop ends every showing.
class QtWindows : public Windows {
public:
  void ShowModal(Form& form, Form* owner) override;

private:
  std::map<std::string, const Form*, std::less<>> shown_;
};

} // namespace kelmio

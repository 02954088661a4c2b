// Modal windows by their forms.
#pragma once

#include <set>

#include "platform/dialogs.h"

namespace kelmio {

/// A form that is being shown already is brought to the front, and `ShowModal` returns at once. The end of the
/// program's loop ends every showing.
class QtWindows : public Windows {
public:
  void ShowModal(Form& form, Form* owner) override;

private:
  std::set<const Form*> shown_;
};

} // namespace kelmio

// Modal windows by their forms.
#pragma once

#include <QWidget>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "controls/form.h"
#include "platform/dialogs.h"

namespace kelmio {

/// There is one window of a name at a time, so that the tray's menu can't open a second contact list over the first:
/// the one that is being shown already is brought to the front, and `ShowModal` returns at once. The end of the
/// program's loop ends every showing. A window beside the others is deleted from the loop once it has hidden itself.
class QtWindows : public Windows {
public:
  QtWindows() = default;
  QtWindows(const QtWindows&) = delete;
  QtWindows& operator=(const QtWindows&) = delete;
  ~QtWindows() override;

  void ShowModal(Form& form, Form* owner) override;
  void Show(std::shared_ptr<Form> form, Activation activation) override;
  void CloseAll() override;

private:
  struct Beside {
    std::shared_ptr<Form> form; // before its window: it outlives it
    std::unique_ptr<QWidget> window;
  };
  void Drop(const Form* form);

  std::map<std::string, const Form*, std::less<>> shown_;
  std::vector<std::unique_ptr<Beside>> beside_;
};

} // namespace kelmio

// The keys that the global hot key can be made of.
#pragma once

#include <string>
#include <vector>

#include "controls/basic_controls.h"

namespace kelmio {

/// An entry of a list and the number that it stands for.
struct HotKeyChoice {
  std::string text;
  int data;
};

/// "F1" to "F16", the digits and the letters, by the virtual key codes of the Windows API.
const std::vector<HotKeyChoice>& HotKeyChoices();
/// Every combination of Alt, Ctrl and Shift, by the modifier bits of the Windows API.
const std::vector<HotKeyChoice>& HotKeyModifierChoices();

/// Fills the list and selects the entry of that number, or none.
void FillHotKeyList(ComboBox& list, const std::vector<HotKeyChoice>& choices, int selected);
/// The number of the selected entry; `otherwise` when none is.
int SelectedHotKeyData(const ComboBox& list, const std::vector<HotKeyChoice>& choices, int otherwise);

} // namespace kelmio

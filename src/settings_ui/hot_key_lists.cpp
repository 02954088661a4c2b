#include "settings_ui/hot_key_lists.h"

#include <cstddef>
#include <utility>

namespace kelmio {

namespace {

constexpr int kVirtualKeyF1 = 112;
constexpr int kFunctionKeys = 16;

std::vector<HotKeyChoice> MakeKeys() {
  std::vector<HotKeyChoice> keys;
  for (int key = 1; key <= kFunctionKeys; ++key)
    keys.push_back({"F" + std::to_string(key), kVirtualKeyF1 + key - 1});
  // Digits and letters have their ASCII codes.
  for (char digit = '0'; digit <= '9'; ++digit)
    keys.push_back({std::string(1, digit), digit});
  for (char letter = 'A'; letter <= 'Z'; ++letter)
    keys.push_back({std::string(1, letter), letter});
  return keys;
}

} // namespace

const std::vector<HotKeyChoice>& HotKeyChoices() {
  static const std::vector<HotKeyChoice> kKeys = MakeKeys();
  return kKeys;
}

const std::vector<HotKeyChoice>& HotKeyModifierChoices() {
  static const std::vector<HotKeyChoice> kModifiers = {
      {"Alt", 1},       {"Ctrl", 2},       {"Alt+Ctrl", 3},       {"Shift", 4},
      {"Alt+Shift", 5}, {"Ctrl+Shift", 6}, {"Alt+Ctrl+Shift", 7},
  };
  return kModifiers;
}

void FillHotKeyList(ComboBox& list, const std::vector<HotKeyChoice>& choices, int selected) {
  std::vector<std::string> texts;
  int index = ComboBox::kNone;
  for (const HotKeyChoice& choice : choices) {
    if (choice.data == selected)
      index = static_cast<int>(texts.size());
    texts.push_back(choice.text);
  }
  list.Items = std::move(texts);
  list.ListIndex = index;
}

int SelectedHotKeyData(const ComboBox& list, const std::vector<HotKeyChoice>& choices, int otherwise) {
  return list.ListIndex >= 0 ? choices.at(static_cast<std::size_t>(list.ListIndex.Get())).data : otherwise;
}

} // namespace kelmio

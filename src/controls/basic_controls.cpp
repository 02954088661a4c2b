#include "controls/basic_controls.h"

#include <algorithm>

namespace kelmio {

void TextBox::ReplaceSelection(const std::string& text) {
  std::string whole = Text.Get();
  const std::size_t start = std::min(SelStart.Get(), whole.size());
  const std::size_t length = std::min(SelLength.Get(), whole.size() - start);
  whole.replace(start, length, text);
  Text = std::move(whole);
  SelLength = 0;
  SelStart = start + text.size();
}

void StatusBar::AddPanel(PanelKind kind, std::string text) {
  panels_.push_back({kind, std::move(text)});
  Changed();
}

void StatusBar::SetPanel(std::size_t number, std::string text) {
  if (number < 1 || number > panels_.size() || panels_[number - 1].text == text)
    return;
  panels_[number - 1].text = std::move(text);
  Changed();
}

const std::string& StatusBar::PanelText(std::size_t number) const {
  static const std::string none;
  return number >= 1 && number <= panels_.size() ? panels_[number - 1].text : none;
}

} // namespace kelmio

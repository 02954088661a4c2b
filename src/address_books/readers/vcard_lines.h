// The cards of a vCard file.
#pragma once

#include <functional>
#include <string>
#include <string_view>

/// Any thread.
namespace kelmio {

/// Whether a line of the text begins a card.
bool HasCard(std::string_view text);

/// Hands over each card of a file's text by itself, with a property in each line: nothing is folded, all is UTF-8, and
/// only properties that a contact needs are in it, so no photo and no card within the card. A card without an end
/// ends where the next begins, or with the file.
void ForEachCard(std::string_view text, const std::function<void(const std::string& card)>& take);

} // namespace kelmio

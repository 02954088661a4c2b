// The number at the beginning of a text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelmio {

/// The decimal text of the number that `text` begins with, "0" where it begins with none. Blanks, tabs and line feeds
/// are passed over wherever they stand; a sign, a decimal point and an exponent after "E" or "D" belong to the number,
/// and the first other character ends it. More than fifteen digits come out in exponent form. Nothing for a number
/// beyond what 64 bits of a floating-point number hold.
std::optional<std::string> NumericText(std::string_view text);

} // namespace kelmio

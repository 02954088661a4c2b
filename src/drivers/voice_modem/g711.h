// Companded samples (ITU-T G.711).
#pragma once

#include <cstdint>

namespace kelmio {

std::uint8_t ToMuLaw(std::int16_t sample);
std::int16_t FromMuLaw(std::uint8_t code);
std::uint8_t ToALaw(std::int16_t sample);
std::int16_t FromALaw(std::uint8_t code);

} // namespace kelmio

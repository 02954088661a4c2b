#include "telephony/tapi_control/TAPIWaveFormat.h"

#include "telephony/tapi_control/line_service.h"

namespace kelmio {

void TAPIWaveFormat::SetID(std::string id) {
  id_ = std::move(id);
}

std::string TAPIWaveFormat::CodeName() const {
  const auto format = FromFormatText(id_);
  return format ? CodeNameOf(*format) : std::string();
}

std::string TAPIWaveFormat::Detail() const {
  const auto format = FromFormatText(id_);
  return format ? DetailOf(*format) : std::string();
}

long TAPIWaveFormat::NumberA() const {
  const auto format = FromFormatText(id_);
  return format ? static_cast<long>(format->samples_per_second) : 0;
}

long TAPIWaveFormat::NumberB() const {
  const auto format = FromFormatText(id_);
  return format ? format->bits_per_sample : 0;
}

bool TAPIWaveFormat::Supported() const {
  const auto format = FromFormatText(id_);
  return format && service_.Sounds().CanRecord(*format);
}

void TAPIWaveFormat::SelectDialog(const std::string& title) {
  FormatDialog* dialog = service_.Dialog();
  if (dialog == nullptr)
    return;
  if (const auto chosen = dialog->Select(title, FromFormatText(id_).value_or(WaveFormatRecord{})))
    id_ = ToFormatText(*chosen);
}

void TAPIWaveFormat::Reset() {
  id_ = ToFormatText(WaveFormatRecord{});
}

WaveFormatRecord TAPIWaveFormat::Recordable() const {
  return Supported() ? *FromFormatText(id_) : WaveFormatRecord{};
}

} // namespace kelmio

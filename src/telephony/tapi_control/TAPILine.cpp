#include "telephony/tapi_control/TAPILine.h"

#include "telephony/tapi_control/shared_line.h"

namespace kelmio {

TAPILine::TAPILine(LineService& service, std::shared_ptr<SharedLine> shared, TAPIExCtl& control)
    : shared_(std::move(shared)), control_(&control), wave_format_(service) {}

TAPILine::~TAPILine() {
  Close();
}

std::string TAPILine::Name() const {
  return shared_->Device().Caps().line_name;
}

long TAPILine::DeviceID() const {
  return shared_->Device().DeviceID();
}

TAPILineCaps TAPILine::Caps() const {
  return TAPILineCaps(shared_->Device().Caps());
}

std::optional<PhoneCaps> TAPILine::Phone() const {
  return shared_->Device().Caps().phone;
}

LineStatus TAPILine::Status() const {
  return shared_->Device().Status();
}

bool TAPILine::Open() {
  if (!open_ && control_ != nullptr)
    open_ = shared_->Open(*this);
  return open_;
}

void TAPILine::Close() {
  if (!open_)
    return;
  open_ = false;
  shared_->Close(*this);
}

std::shared_ptr<TAPICall> TAPILine::MakeCall(const std::string& number) {
  return open_ ? shared_->MakeCall(number) : nullptr;
}

void TAPILine::ConfigDialog() {
  shared_->Device().Configure();
}

void TAPILine::Detach() {
  Close();
  control_ = nullptr;
}

} // namespace kelmio

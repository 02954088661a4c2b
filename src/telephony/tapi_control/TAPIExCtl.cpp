#include "telephony/tapi_control/TAPIExCtl.h"

#include "telephony/tapi_control/shared_line.h"

namespace kelmio {

TAPIExCtl::~TAPIExCtl() {
  Shutdown();
}

void TAPIExCtl::Initialize() {
  main_ = InitMode == kInitModeMain;
  initialized_ = true;
  service_.AddInstance(*this, main_);
  lines_.clear();
  for (const auto& shared : service_.Lines())
    lines_.push_back(MakeLine(shared));
}

void TAPIExCtl::Shutdown() {
  if (!initialized_)
    return;
  for (const auto& handed_out : handed_out_)
    if (const auto line = handed_out.lock())
      line->Detach();
  handed_out_.clear();
  lines_.clear();
  service_.RemoveInstance(*this);
  initialized_ = false;
}

std::shared_ptr<TAPILine> TAPIExCtl::LineByDeviceID(long device_id) {
  if (!initialized_)
    return nullptr;
  for (const auto& shared : service_.Lines())
    if (shared->Device().DeviceID() == device_id)
      return MakeLine(shared);
  return nullptr;
}

std::shared_ptr<TAPILine> TAPIExCtl::MakeLine(const std::shared_ptr<SharedLine>& shared) {
  std::erase_if(handed_out_, [](const auto& line) { return line.expired(); });
  auto line = std::make_shared<TAPILine>(service_, shared, *this);
  handed_out_.push_back(line);
  return line;
}

} // namespace kelmio

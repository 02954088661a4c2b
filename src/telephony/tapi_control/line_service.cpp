#include "telephony/tapi_control/line_service.h"

#include <algorithm>

#include "telephony/tapi_control/TAPIExCtl.h"
#include "telephony/tapi_control/shared_line.h"

namespace kelmio {

LineService::~LineService() = default;

void LineService::AddDriver(std::unique_ptr<LineDriver> driver) {
  driver->Watch([this] { Tell(instances_, [](TAPIExCtl& instance) { instance.OnLinesChanged(); }); });
  driver->TellTrouble([this](const std::string& words) { Log(words); });
  drivers_.push_back(std::move(driver));
}

const std::vector<std::shared_ptr<SharedLine>>& LineService::Lines() {
  std::vector<std::shared_ptr<SharedLine>> now;
  for (const auto& driver : drivers_) {
    for (const auto& device : driver->Lines()) {
      const auto known =
          std::find_if(lines_.begin(), lines_.end(), [&](const auto& line) { return &line->Device() == device.get(); });
      now.push_back(known != lines_.end() ? *known : std::make_shared<SharedLine>(*this, device));
    }
  }
  lines_ = std::move(now);
  return lines_;
}

void LineService::Log(const std::string& text) {
  Tell(instances_, [&](TAPIExCtl& instance) { instance.OnLogText(text); });
}

void LineService::AddInstance(TAPIExCtl& instance, bool first) {
  RemoveInstance(instance);
  instances_.insert(first ? instances_.begin() : instances_.end(), &instance);
}

void LineService::RemoveInstance(TAPIExCtl& instance) {
  std::erase(instances_, &instance);
}

bool LineService::HasInstance(const TAPIExCtl* instance) const {
  return std::find(instances_.begin(), instances_.end(), instance) != instances_.end();
}

bool LineService::HearsBefore(const TAPIExCtl* left, const TAPIExCtl* right) const {
  return std::find(instances_.begin(), instances_.end(), left) < std::find(instances_.begin(), instances_.end(), right);
}

void LineService::Tell(const std::vector<TAPIExCtl*>& audience, const std::function<void(TAPIExCtl&)>& event) const {
  // A handler may shut an instance down, so that the list is copied and each is looked up at its turn.
  const std::vector<TAPIExCtl*> listeners = audience; // NOLINT(performance-unnecessary-copy-initialization)
  for (TAPIExCtl* listener : listeners)
    if (HasInstance(listener))
      event(*listener);
}

} // namespace kelmio

#pragma once

#include <map>
#include <string>
#include <string_view>

namespace kelmio::emulated {

// Which faults are switched on, by number; ModemEmulator::SetFault has the list.
class Faults {
public:
  void Set(int number, std::string detail) { on_[number] = std::move(detail); }
  void Clear(int number) { on_.erase(number); }
  bool On(int number) const { return on_.count(number) != 0; }
  bool Is(int number, std::string_view detail) const { return On(number) && Detail(number) == detail; }

  std::string Detail(int number) const {
    const auto found = on_.find(number);
    return found == on_.end() ? std::string() : found->second;
  }

private:
  std::map<int, std::string> on_;
};

} // namespace kelmio::emulated

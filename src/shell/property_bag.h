// The properties that a control keeps in the definition of its window.
#pragma once

#include <map>
#include <string>
#include <variant>

namespace kelmio {

/// A property that has its default isn't kept.
class PropertyBag {
public:
  /// The default for a property that isn't kept, or is of another type.
  template <class Value> Value ReadProperty(const std::string& name, const Value& fallback) const {
    const auto found = values_.find(name);
    const Value* value = found != values_.end() ? std::get_if<Value>(&found->second) : nullptr;
    return value != nullptr ? *value : fallback;
  }
  template <class Value> void WriteProperty(const std::string& name, const Value& value, const Value& fallback) {
    if (value == fallback)
      values_.erase(name);
    else
      values_[name] = value;
  }
  std::size_t Count() const { return values_.size(); }

private:
  std::map<std::string, std::variant<bool, int, std::string>> values_;
};

} // namespace kelmio

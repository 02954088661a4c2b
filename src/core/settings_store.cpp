#include "core/settings_store.h"

namespace kelmio {
namespace {

cRegistry ValueNamed(RegistryStore& store, std::string_view product, std::string_view section, std::string_view name) {
  cRegistry registry(store);
  registry.ClassKey = kHkeyLocalMachine;
  registry.SectionKey = "Software\\" + std::string(product) + "\\" + std::string(section);
  registry.ValueKey = name;
  registry.ValueType = registry_type::kText;
  return registry;
}

} // namespace

RegistryData RegistryRead(RegistryStore& store, std::string_view product, std::string_view section,
                          std::string_view name, const RegistryData& default_value) {
  cRegistry registry = ValueNamed(store, product, section, name);
  registry.Default = default_value;
  return registry.Value();
}

RegistryOutcome RegistryWrite(RegistryStore& store, std::string_view product, std::string_view section,
                              std::string_view name, const std::string& value) {
  return ValueNamed(store, product, section, name).SetValue(value);
}

} // namespace kelmio

// The two helpers through which every setting is read and written.
#pragma once

#include <string>
#include <string_view>

#include "core/cRegistry.h"

namespace kelmio {

inline constexpr std::string_view kSettingsProduct = "Ardelta\\Kelmio";
inline constexpr std::string_view kSettingsSection = "Settings";

/// The stored value, or `default_value` if the value or its key is missing. Nothing is cached.
RegistryData RegistryRead(RegistryStore& store, std::string_view product, std::string_view section,
                          std::string_view name, const RegistryData& default_value);

/// Writes a text; creates the key if it is missing.
RegistryOutcome RegistryWrite(RegistryStore& store, std::string_view product, std::string_view section,
                              std::string_view name, const std::string& value);

} // namespace kelmio

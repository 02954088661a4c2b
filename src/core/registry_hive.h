// The registry of this desktop: one hive, kept in one file in the registry-export text format.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/registry_text.h"
#include "core/store_file.h"
#include "platform/registry_store.h"

namespace kelmio {

/// Every change is one change of the file, made on what the file holds at that moment, so that two running
/// copies don't lose each other's values; every query sees what another copy has written. The file is the
/// user's alone (mode 0600), and so is its folder when it has to be made. A file that can't be read reads as
/// empty and is never written over. User interface thread only.
class RegistryHive : public RegistryStore {
public:
  explicit RegistryHive(std::string file);

  bool KeyExists(std::uint32_t root, std::string_view path) const override;
  RegistryResult CreateKey(std::uint32_t root, std::string_view path) override;
  /// A key that has keys below it is refused.
  RegistryResult DeleteKey(std::uint32_t root, std::string_view path) override;
  std::optional<RegistryValue> Query(std::uint32_t root, std::string_view path, std::string_view name) const override;
  RegistryResult Set(std::uint32_t root, std::string_view path, std::string_view name,
                     const RegistryValue& value) override;
  RegistryResult DeleteValue(std::uint32_t root, std::string_view path, std::string_view name) override;
  std::vector<std::string> ValueNames(std::uint32_t root, std::string_view path) const override;
  std::vector<std::string> SubKeys(std::uint32_t root, std::string_view path) const override;

private:
  using Edit = std::function<RegistryResult(RegistryText&)>;

  const RegistryText& Current() const;
  RegistryResult Change(const Edit& edit);

  std::string file_;
  mutable RegistryText text_{""};
  mutable std::optional<FileStamp> stamp_;
};

} // namespace kelmio

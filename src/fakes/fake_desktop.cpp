#include "fakes/fake_desktop.h"

namespace kelmio {

namespace {

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  return lower;
}

} // namespace

std::string FakeRegistryStore::KeyName(std::uint32_t root, std::string_view path) {
  return std::to_string(root) + '\\' + Lower(path);
}

bool FakeRegistryStore::KeyExists(std::uint32_t root, std::string_view path) const {
  return keys_.contains(KeyName(root, path));
}

RegistryResult FakeRegistryStore::CreateKey(std::uint32_t root, std::string_view path) {
  if (read_only)
    return RegistryResult::AccessDenied;
  // The keys above it stand from then on too.
  for (std::size_t end = 0; end != std::string_view::npos;) {
    end = path.find('\\', end + 1);
    keys_.try_emplace(KeyName(root, path.substr(0, end)), Key{std::string(path.substr(0, end)), {}});
  }
  return RegistryResult::Ok;
}

RegistryResult FakeRegistryStore::DeleteKey(std::uint32_t root, std::string_view path) {
  if (read_only)
    return RegistryResult::AccessDenied;
  if (!SubKeys(root, path).empty())
    return RegistryResult::AccessDenied;
  return keys_.erase(KeyName(root, path)) != 0 ? RegistryResult::Ok : RegistryResult::NotFound;
}

std::optional<RegistryValue> FakeRegistryStore::Query(std::uint32_t root, std::string_view path,
                                                      std::string_view name) const {
  const auto key = keys_.find(KeyName(root, path));
  if (key == keys_.end())
    return std::nullopt;
  const auto value = key->second.values.find(Lower(name));
  if (value == key->second.values.end())
    return std::nullopt;
  return value->second.value;
}

RegistryResult FakeRegistryStore::Set(std::uint32_t root, std::string_view path, std::string_view name,
                                      const RegistryValue& value) {
  if (const RegistryResult made = CreateKey(root, path); made != RegistryResult::Ok)
    return made;
  keys_[KeyName(root, path)].values[Lower(name)] = {std::string(name), value};
  return RegistryResult::Ok;
}

RegistryResult FakeRegistryStore::DeleteValue(std::uint32_t root, std::string_view path, std::string_view name) {
  if (read_only)
    return RegistryResult::AccessDenied;
  const auto key = keys_.find(KeyName(root, path));
  if (key == keys_.end() || key->second.values.erase(Lower(name)) == 0)
    return RegistryResult::NotFound;
  return RegistryResult::Ok;
}

std::vector<std::string> FakeRegistryStore::ValueNames(std::uint32_t root, std::string_view path) const {
  std::vector<std::string> names;
  if (const auto key = keys_.find(KeyName(root, path)); key != keys_.end())
    for (const auto& [lower, value] : key->second.values)
      names.push_back(value.name);
  return names;
}

std::vector<std::string> FakeRegistryStore::SubKeys(std::uint32_t root, std::string_view path) const {
  std::vector<std::string> names;
  const std::string prefix = KeyName(root, path) + '\\';
  for (const auto& [name, key] : keys_)
    if (name.starts_with(prefix) && name.find('\\', prefix.size()) == std::string::npos)
      names.push_back(key.path.substr(path.size() + 1));
  return names;
}

} // namespace kelmio

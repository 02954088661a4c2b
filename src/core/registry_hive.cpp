#include "core/registry_hive.h"

#include <filesystem>

namespace kelmio {
namespace {

constexpr std::uint32_t kHkeyUsers = 0x80000003U;

// The key's place in the hive; empty for a root or a path that no file can hold.
std::string FullKey(std::uint32_t root, std::string_view path) {
  std::string_view name;
  switch (root) {
  case kHkeyClassesRoot:
    name = "HKEY_CLASSES_ROOT";
    break;
  case kHkeyCurrentUser:
    name = "HKEY_CURRENT_USER";
    break;
  case kHkeyLocalMachine:
    name = "HKEY_LOCAL_MACHINE";
    break;
  case kHkeyUsers:
    name = "HKEY_USERS";
    break;
  default:
    return {};
  }
  while (path.ends_with('\\'))
    path.remove_suffix(1);
  constexpr std::string_view kLineBreaks("\r\n\0", 3);
  if (path.find_first_of(kLineBreaks) != std::string_view::npos)
    return {};
  return std::string(name) + (path.empty() ? "" : "\\") + std::string(path);
}

bool CanNameValue(std::string_view name) {
  constexpr std::string_view kLineBreaks("\r\n\0", 3);
  return name.find_first_of(kLineBreaks) == std::string_view::npos;
}

} // namespace

RegistryHive::RegistryHive(std::string file) : file_(std::move(file)) {}

bool RegistryHive::KeyExists(std::uint32_t root, std::string_view path) const {
  return Current().KeyExists(FullKey(root, path));
}

RegistryResult RegistryHive::CreateKey(std::uint32_t root, std::string_view path) {
  const std::string key = FullKey(root, path);
  if (key.empty())
    return RegistryResult::AccessDenied;
  if (Current().KeyExists(key))
    return RegistryResult::Ok;
  return Change([&](RegistryText& text) {
    text.CreateKey(key);
    return RegistryResult::Ok;
  });
}

RegistryResult RegistryHive::DeleteKey(std::uint32_t root, std::string_view path) {
  const std::string key = FullKey(root, path);
  if (!Current().KeyExists(key))
    return RegistryResult::NotFound;
  return Change([&](RegistryText& text) {
    if (!text.KeyExists(key))
      return RegistryResult::NotFound;
    if (!text.SubKeys(key).empty())
      return RegistryResult::AccessDenied;
    text.DeleteKey(key);
    // The key above may have stood by this one alone.
    if (const std::size_t end = key.rfind('\\'); end != std::string::npos && key.find('\\') != end)
      text.CreateKey(key.substr(0, end));
    return RegistryResult::Ok;
  });
}

std::optional<RegistryValue> RegistryHive::Query(std::uint32_t root, std::string_view path,
                                                 std::string_view name) const {
  return Current().Query(FullKey(root, path), name);
}

RegistryResult RegistryHive::Set(std::uint32_t root, std::string_view path, std::string_view name,
                                 const RegistryValue& value) {
  const std::string key = FullKey(root, path);
  if (key.empty() || !CanNameValue(name))
    return RegistryResult::AccessDenied;
  return Change([&](RegistryText& text) {
    text.Set(key, name, value);
    return RegistryResult::Ok;
  });
}

RegistryResult RegistryHive::DeleteValue(std::uint32_t root, std::string_view path, std::string_view name) {
  const std::string key = FullKey(root, path);
  if (!Current().Query(key, name))
    return RegistryResult::NotFound;
  return Change(
      [&](RegistryText& text) { return text.DeleteValue(key, name) ? RegistryResult::Ok : RegistryResult::NotFound; });
}

std::vector<std::string> RegistryHive::ValueNames(std::uint32_t root, std::string_view path) const {
  return Current().ValueNames(FullKey(root, path));
}

std::vector<std::string> RegistryHive::SubKeys(std::uint32_t root, std::string_view path) const {
  return Current().SubKeys(FullKey(root, path));
}

const RegistryText& RegistryHive::Current() const {
  // Every write makes a new file, so that no two states have the same stamp.
  const std::optional<FileStamp> stamp = StampOf(file_);
  if (stamp != stamp_) {
    text_ = RegistryText(ReadStoreFile(file_).value_or(""));
    stamp_ = stamp;
  }
  return text_;
}

RegistryResult RegistryHive::Change(const Edit& edit) {
  const std::filesystem::path folder = std::filesystem::path(file_).parent_path();
  if (!folder.empty() && !MakePrivateFolder(folder.string()))
    return RegistryResult::WriteFault;
  RegistryResult result = RegistryResult::WriteFault;
  const auto change = [&](std::string_view bytes) -> std::optional<std::string> {
    RegistryText text(bytes);
    const std::string before = text.Bytes();
    result = edit(text);
    std::string after = text.Bytes();
    if (result != RegistryResult::Ok || after == before)
      return std::nullopt;
    return after;
  };
  return ChangeStoreFile(file_, change, NewFileMode::OwnerOnly) ? result : RegistryResult::WriteFault;
}

} // namespace kelmio

#include "core/mIni.h"

#include <optional>

#include "core/ini_document.h"
#include "core/ini_text.h"
#include "core/store_file.h"

namespace kelmio::mIni {
namespace {

std::vector<std::string> Limited(std::vector<std::string> names, ListLimit limit) {
  return limit == ListLimit::Cut ? CutList(std::move(names)) : names;
}

} // namespace

std::string IniRead(std::string_view section, std::string_view key, const std::string& file) {
  const IniText text(ReadStoreFile(file).value_or(""));
  return text.Read(section, key).value_or("").substr(0, kValueLimit);
}

bool IniWrite(std::string_view section, std::string_view key, std::string_view value, const std::string& file) {
  return IniChange(file, [&](IniText& text) { text.Write(section, key, value); });
}

bool IniWriteSection(std::string_view section, const std::vector<std::pair<std::string, std::string>>& keys,
                     const std::string& file) {
  return IniChange(file, [&](IniText& text) {
    for (const auto& [key, value] : keys)
      text.Write(section, key, value);
  });
}

bool IniChange(const std::string& file, const std::function<void(IniText&)>& edit) {
  return ChangeStoreFile(file, [&](std::string_view bytes) -> std::optional<std::string> {
    IniText text{std::string(bytes)};
    edit(text);
    if (!text.Changed())
      return std::nullopt;
    return text.Bytes();
  });
}

std::vector<std::string> IniSectionNames(const std::string& file, ListLimit limit) {
  return Limited(IniDocument::Load(file).SectionNames(), limit);
}

std::vector<std::string> IniSectionKeys(std::string_view section, const std::string& file, ListLimit limit) {
  return Limited(IniDocument::Load(file).SectionKeys(section), limit);
}

bool IniDeleteKey(std::string_view section, std::string_view key, const std::string& file) {
  return IniChange(file, [&](IniText& text) { text.DeleteKey(section, key); });
}

bool IniDeleteSection(std::string_view section, const std::string& file) {
  return IniChange(file, [&](IniText& text) { text.DeleteSection(section); });
}

std::vector<std::string> CutList(std::vector<std::string> names) {
  std::size_t used = 0;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (used + names[i].size() >= kListLimit) {
      names[i].resize(kListLimit - used);
      names.resize(names[i].empty() && used > 0 ? i : i + 1);
      break;
    }
    used += names[i].size() + 1;
  }
  return names;
}

} // namespace kelmio::mIni

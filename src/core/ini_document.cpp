#include "core/ini_document.h"

#include "core/ini_lines.h"
#include "core/ini_text.h"
#include "core/mIni.h"
#include "core/store_file.h"
#include "core/text.h"

namespace kelmio {
namespace {

// Below so many keys a walk is quicker than building and asking a table.
constexpr std::size_t kWorthATable = 32;

std::string Folded(std::string_view name) {
  return AsciiLower(TrimIniBlanks(name));
}

} // namespace

IniDocument IniDocument::Load(const std::string& file) {
  return IniDocument(ReadStoreFile(file).value_or(""));
}

IniDocument::IniDocument(std::string bytes)
    : text_(std::make_unique<const std::string>(DecodeIniBytes(std::move(bytes)))) {
  for (std::size_t at = 0; at < text_->size();) {
    const IniLine line = ReadIniLine(*text_, at);
    at = line.next;
    if (line.kind == IniLineKind::Section)
      sections_.push_back({line.name, {}, {}});
    else if (line.kind == IniLineKind::Key && !sections_.empty())
      sections_.back().entries.push_back({line.name, line.value});
  }
  places_.reserve(sections_.size());
  for (std::size_t i = 0; i < sections_.size(); ++i) {
    Section& section = sections_[i];
    places_.try_emplace(Folded(section.name), i);
    if (section.entries.size() < kWorthATable)
      continue;
    for (std::size_t entry = 0; entry < section.entries.size(); ++entry)
      section.places.try_emplace(Folded(section.entries[entry].key), entry);
  }
}

std::string_view IniDocument::Read(std::string_view section, std::string_view key) const {
  const Section* found = Find(section);
  if (found == nullptr)
    return {};
  if (!found->places.empty()) {
    const auto place = found->places.find(Folded(key));
    return place == found->places.end() ? std::string_view()
                                        : found->entries[place->second].value.substr(0, mIni::kValueLimit);
  }
  const std::string_view name = TrimIniBlanks(key);
  for (const Entry& entry : found->entries)
    if (EqualsIgnoringAsciiCase(entry.key, name))
      return entry.value.substr(0, mIni::kValueLimit);
  return {};
}

std::vector<std::string> IniDocument::SectionNames() const {
  std::vector<std::string> names;
  names.reserve(sections_.size());
  for (const Section& section : sections_)
    names.emplace_back(section.name);
  return names;
}

std::vector<std::string> IniDocument::SectionKeys(std::string_view section) const {
  std::vector<std::string> names;
  if (const Section* found = Find(section))
    for (const Entry& entry : found->entries)
      names.emplace_back(entry.key);
  return names;
}

const IniDocument::Section* IniDocument::Find(std::string_view name) const {
  const auto place = places_.find(Folded(name));
  return place == places_.end() ? nullptr : &sections_[place->second];
}

} // namespace kelmio

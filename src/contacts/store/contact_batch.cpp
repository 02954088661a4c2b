#include "contacts/store/contact_batch.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "core/ini_document.h"
#include "core/ini_lines.h"
#include "core/ini_text.h"
#include "core/mIni.h"

namespace kelmio {

namespace {

/// A crash costs the contacts of one portion: the first ones are small.
constexpr std::size_t kFirstPortion = 100;

constexpr std::size_t kName = 0; // in `ContactValues`

struct NewSection {
  std::string contact_id;
  std::vector<std::pair<std::string, std::string>> keys;
};

/// Later values replace earlier ones in their place.
void AddKeys(NewSection& section, const ContactValues& contact) {
  for (std::size_t field = 0; field < contact.size(); ++field) {
    if (!contact[field])
      continue;
    const std::string_view key = kContactFields[field].key;
    const auto written =
        std::find_if(section.keys.begin(), section.keys.end(), [&](auto& one) { return one.first == key; });
    if (written != section.keys.end())
      written->second = *contact[field];
    else
      section.keys.emplace_back(key, *contact[field]);
  }
}

/// Gives each contact the lowest identifier without a name.
std::vector<NewSection> Allocate(const std::vector<ContactValues>& contacts, const IniDocument& document) {
  std::vector<NewSection> sections;
  int number = 0;
  bool taken = true; // the section of `number` has a name
  for (const ContactValues& contact : contacts) {
    if (taken) {
      std::string contact_id;
      do
        contact_id = std::to_string(++number);
      while (!document.Read(contact_id, kContactFields[kName].key).empty());
      sections.push_back({std::move(contact_id), {}});
    }
    AddKeys(sections.back(), contact);
    taken = !TrimIniBlanks(contact[kName].value_or("")).empty();
  }
  return sections;
}

} // namespace

ContactBatch::ContactBatch(std::string file, TroubleSink trouble)
    : file_(std::move(file)), trouble_(std::move(trouble)) {}

void ContactBatch::Add(ContactValues contact) {
  gathered_.push_back(std::move(contact));
  if (gathered_.size() >= std::max(kFirstPortion, flushed_))
    Flush();
}

void ContactBatch::Flush() {
  if (gathered_.empty())
    return;
  const bool written = mIni::IniChange(file_, [this](IniText& text) {
    const IniDocument document(text.Bytes());
    std::unordered_set<std::string> standing;
    for (std::string& name : document.SectionNames())
      standing.insert(std::move(name));
    for (const NewSection& section : Allocate(gathered_, document)) {
      if (!standing.contains(section.contact_id)) {
        text.AppendSection(section.contact_id, section.keys);
        continue;
      }
      for (const auto& [key, value] : section.keys)
        text.Write(section.contact_id, key, value);
    }
  });
  if (!written)
    trouble_(NotWritten(file_));
  flushed_ += gathered_.size();
  gathered_.clear();
}

} // namespace kelmio

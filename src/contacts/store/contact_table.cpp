#include "contacts/store/contact_table.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "core/ini_document.h"

namespace kelmio {
namespace {

using Member = std::string ContactRecord::*;

Member SortKey(int sort_by) {
  switch (std::abs(std::int64_t{sort_by})) {
  case 2:
    return &ContactRecord::Name;
  case 3:
    return &ContactRecord::Phone;
  case 4:
    return &ContactRecord::Mobile;
  case 5:
    return &ContactRecord::Email;
  case 6:
    return &ContactRecord::BusinessFax;
  default:
    return nullptr;
  }
}

} // namespace

ContactTable::ContactTable(std::string contacts_file) : file_(std::move(contacts_file)) {}

void ContactTable::LoadContacts() {
  const IniDocument document = IniDocument::Load(file_);
  const std::vector<std::string> names = document.SectionNames();
  count_ = names.size();
  if (names.empty())
    return;
  rows_by_number_.clear();
  contacts_.clear();
  contacts_.reserve(names.size());
  for (const std::string& name : names)
    contacts_.push_back(ReadContact(document, name));
  IndexNumbers();
}

void ContactTable::SortContacts(int sort_by) {
  const Member key = SortKey(sort_by);
  if (count_ < 1 || key == nullptr)
    return;
  // Stable, and strict in both directions: equal keys keep their earlier order, descending too.
  rows_by_number_.clear();
  std::stable_sort(contacts_.begin(), contacts_.end(), [&](const ContactRecord& left, const ContactRecord& right) {
    return sort_by > 0 ? left.*key < right.*key : left.*key > right.*key;
  });
  IndexNumbers();
}

std::string ContactTable::GetMessageContactID(std::string_view number) const {
  const auto row = rows_by_number_.find(number);
  return row == rows_by_number_.end() ? std::string() : contacts_[row->second].ContactID;
}

void ContactTable::IndexNumbers() {
  rows_by_number_.reserve(contacts_.size() * 2);
  for (std::size_t row = 0; row < contacts_.size(); ++row) {
    const ContactRecord& contact = contacts_[row];
    for (const Member member :
         {&ContactRecord::Mobile, &ContactRecord::Phone, &ContactRecord::BusinessPhone, &ContactRecord::BusinessFax})
      rows_by_number_.try_emplace(contact.*member, row);
  }
}

} // namespace kelmio

// The contacts in memory: what the caller lookup and the contact list work on.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "contacts/store/contact_file.h"

namespace kelmio {

/// A snapshot of the contact file: a contact saved or deleted since reaches it only at the next load. User
/// interface thread only.
class ContactTable {
public:
  explicit ContactTable(std::string contacts_file);
  ContactTable(const ContactTable&) = delete;
  ContactTable& operator=(const ContactTable&) = delete;

  /// Rebuilds the table in file order. A file without sections leaves the old rows and sets the count to 0.
  void LoadContacts();

  /// Sorts by the column of the contact list that `sort_by` names, greatest first when it is negative; ties and
  /// unknown columns keep the order. Binary comparison. Column 5 sorts by e-mail address and column 6 by
  /// business fax, though they show other fields.
  void SortContacts(int sort_by);

  /// The identifier of the first row, in the table's present order, of which a telephone field equals `number`
  /// byte by byte; empty when there is none. Rows that an emptied file has left are still found.
  std::string GetMessageContactID(std::string_view number) const;

  const std::vector<ContactRecord>& Contacts() const { return contacts_; }
  /// Rows that the last load has found.
  std::size_t ContactCount() const { return count_; }

private:
  void IndexNumbers();

  std::string file_;
  std::vector<ContactRecord> contacts_;
  std::size_t count_ = 0;
  // From each telephone field to the first row that has it; the texts are those of the rows.
  std::unordered_map<std::string_view, std::size_t> rows_by_number_;
};

} // namespace kelmio

// Many new contacts at once.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "contacts/store/contact_file.h"
#include "core/trouble.h"

namespace kelmio {

/// What is to be written of one contact, in the order of `kContactFields`. Nothing for a key that isn't written; line
/// breaks are the caller's to remove.
using ContactValues = std::array<std::optional<std::string>, kContactFields.size()>;

/// Gathers new contacts and writes them in growing portions, each as one change of the file, so that the time grows
/// with their number and not with its square. The file comes out as if each contact had been written by itself to the
/// lowest free identifier: a contact without a name leaves its identifier free, and the next one is written over it.
/// What could not be written is told to the sink and lost. User interface thread only.
class ContactBatch {
public:
  ContactBatch(std::string file, TroubleSink trouble);
  ContactBatch(const ContactBatch&) = delete;
  ContactBatch& operator=(const ContactBatch&) = delete;

  void Add(ContactValues contact);
  /// Writes what is gathered; without it the last contacts are lost.
  void Flush();

private:
  std::string file_;
  TroubleSink trouble_;
  std::vector<ContactValues> gathered_;
  std::size_t flushed_ = 0;
};

} // namespace kelmio

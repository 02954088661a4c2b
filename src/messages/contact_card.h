// A contact's fields and photo on a form.
#pragma once

#include <string>

#include "contacts/store/contact_table.h"
#include "controls/basic_controls.h"
#include "controls/picture_box.h"
#include "core/app_state.h"
#include "messages/links.h"

namespace kelmio {

inline constexpr const char* kDialToolTip = "Click to dial this number";

/// Where the message windows look up who is behind a number. User interface thread only.
struct ContactLookup {
  const AppState& app;
  const ContactTable& contacts;

  /// Section of the contact in `Contacts.ini`; empty for an unknown number.
  std::string ContactOf(const std::string& number) const { return contacts.GetMessageContactID(number); }
  std::string Field(const std::string& contact, const char* key) const;
  /// Path of the contact's photo; empty when there is none.
  std::string PhotoOf(const std::string& contact) const;
};

/// The label becomes a link that does nothing while its text is empty.
void LinkToDial(Label& label, MessageLinks& links);
void LinkToMail(Label& label, MessageLinks& links);
void LinkToWebsite(Label& label, MessageLinks& links);

} // namespace kelmio

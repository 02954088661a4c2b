// The whole contact card of a message's caller, in a window of its own.
#pragma once

#include "controls/form.h"
#include "controls/picture_box.h"
#include "messages/contact_card.h"
#include "messages/message_list.h"

namespace kelmio {

/// Shows the contact, and no field of the message itself: an unknown number opens an empty window. User interface
/// thread only.
class frmOpen : public Form {
public:
  frmOpen(const MessageList& list, ContactLookup lookup, MessageLinks& links);

  PictureBox picPhoto;
  Label lblName;
  Label lblNumber;
  Label lblCompany;
  Label lblEmail;
  Label lblWebsite;
  Label lblMobile;
  Label lblBusinessPhone;
  Label lblBusinessFax;
  Label lblJobTitle;
  Label lblStreeAddress;
  Label lblCity;
  Label lblState;
  Label lblZip;
  Label lblCountry;
  Button cmdOK;

  void Load() override { ShowOpenMessage(); }
  void EscapePressed() override { Visible = false; }
  void ShowOpenMessage();

  std::string_view Name() const override { return "frmOpen"; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  struct Field {
    const char* name; // of the control
    const char* key;  // in `Contacts.ini`
    Label frmOpen::*label;
  };
  /// In the order in which they are read.
  static const Field kFields[];

  const MessageList& list_;
  ContactLookup lookup_;
};

} // namespace kelmio

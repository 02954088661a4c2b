#include "messages/frmPreview.h"

namespace kelmio {

frmPreview::frmPreview(const Settings& settings, const MessageList& list, ContactLookup lookup, MessageLinks& links)
    : settings_(settings), list_(list), lookup_(lookup) {
  Caption = "Preview";
  for (Label* number : {&lblNumber, &lblMobile, &lblBusinessPhone})
    LinkToDial(*number, links);
  LinkToMail(lblEmail, links);
}

void frmPreview::Load() {
  BackColor = settings_.PreviewWindowColor;
  picPhoto.BackColor = settings_.PreviewWindowColor;
  lblName.Caption = "";
  lblNumber.Caption = "";
  ForgetContact();
}

void frmPreview::PreviewMessage() {
  const MessageRecord* record = list_.SelectedMessage();
  if (record == nullptr)
    return;
  lblName.Caption = record->Name;
  lblNumber.Caption = record->Number;
  const std::string contact = lookup_.ContactOf(record->Number);
  ForgetContact();
  if (contact.empty())
    return;
  picPhoto.Picture = lookup_.PhotoOf(contact);
  lblCompany.Caption = lookup_.Field(contact, "Company");
  lblEmail.Caption = lookup_.Field(contact, "Email");
  lblEmail.Enabled = !lblEmail.Caption.Get().empty();
  lblMobile.Caption = lookup_.Field(contact, "Mobile");
  lblBusinessPhone.Caption = lookup_.Field(contact, "BusinessPhone");
}

void frmPreview::ForgetContact() {
  picPhoto.Picture = "";
  for (Label* field : {&lblCompany, &lblEmail, &lblMobile, &lblBusinessPhone})
    field->Caption = "";
  lblEmail.Enabled = false;
}

void frmPreview::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("picPhoto", picPhoto);
  visitor.Visit("lblName", lblName);
  visitor.Visit("lblNumber", lblNumber);
  visitor.Visit("lblCompany", lblCompany);
  visitor.Visit("lblEmail", lblEmail);
  visitor.Visit("lblMobile", lblMobile);
  visitor.Visit("lblBusinessPhone", lblBusinessPhone);
}

} // namespace kelmio

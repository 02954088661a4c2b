#include "messages/frmOpen.h"

namespace kelmio {

const frmOpen::Field frmOpen::kFields[] = {
    {"lblCompany", "Company", &frmOpen::lblCompany},
    {"lblEmail", "Email", &frmOpen::lblEmail},
    {"lblWebsite", "Website", &frmOpen::lblWebsite},
    {"lblName", "Name", &frmOpen::lblName},
    {"lblNumber", "Phone", &frmOpen::lblNumber},
    {"lblMobile", "Mobile", &frmOpen::lblMobile},
    {"lblBusinessPhone", "BusinessPhone", &frmOpen::lblBusinessPhone},
    {"lblBusinessFax", "BusinessFax", &frmOpen::lblBusinessFax},
    {"lblJobTitle", "JobTitle", &frmOpen::lblJobTitle},
    {"lblStreeAddress", "StreeAddress", &frmOpen::lblStreeAddress},
    {"lblCity", "City", &frmOpen::lblCity},
    {"lblState", "State", &frmOpen::lblState},
    {"lblZip", "Zip", &frmOpen::lblZip},
    {"lblCountry", "Country", &frmOpen::lblCountry},
};

frmOpen::frmOpen(const MessageList& list, ContactLookup lookup, MessageLinks& links) : list_(list), lookup_(lookup) {
  Caption = "Open";
  cmdOK.Caption = "OK";
  cmdOK.Click = [this] { Visible = false; };
  for (Label* number : {&lblNumber, &lblMobile, &lblBusinessPhone, &lblBusinessFax})
    LinkToDial(*number, links);
  LinkToMail(lblEmail, links);
  LinkToWebsite(lblWebsite, links);
}

void frmOpen::ShowOpenMessage() {
  const MessageRecord* record = list_.SelectedMessage();
  if (record == nullptr)
    return;
  const std::string contact = lookup_.ContactOf(record->Number);
  picPhoto.Picture = "";
  for (const Field& field : kFields)
    (this->*field.label).Caption = "";
  lblEmail.Enabled = false;
  lblWebsite.Enabled = false;
  if (contact.empty())
    return;
  picPhoto.Picture = lookup_.PhotoOf(contact);
  for (const Field& field : kFields)
    (this->*field.label).Caption = lookup_.Field(contact, field.key);
  for (Label* address : {&lblEmail, &lblWebsite})
    address->Enabled = !address->Caption.Get().empty();
  for (Label* number : {&lblNumber, &lblMobile, &lblBusinessPhone, &lblBusinessFax})
    number->Enabled = !number->Caption.Get().empty() && number->Caption.Get() != "Unknown";
}

void frmOpen::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("picPhoto", picPhoto);
  for (const Field& field : kFields)
    visitor.Visit(field.name, this->*field.label);
  visitor.Visit("cmdOK", cmdOK);
}

} // namespace kelmio

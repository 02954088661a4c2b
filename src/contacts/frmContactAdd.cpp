#include "contacts/frmContactAdd.h"

#include <optional>
#include <utility>

namespace kelmio {

namespace {

// The first four stand without a "|" between them: that is how the filter has always read.
constexpr const char* kPictureFilter = "All Image Files (*.gif, *.jpg, *.bmp)|*.gif;*.jpg;*.bmp|"
                                       "GIF Files (*.gif)|*.gif"
                                       "JPG Files (*.jpg)|*.jpg"
                                       "BMP Files (*.bmp)|*.bmp"
                                       "All Files (*.*)|*.*";

} // namespace

const frmContactAdd::Field frmContactAdd::kFields[] = {
    {"txtFullName", &frmContactAdd::txtFullName, &ContactRecord::Name},
    {"txtHomePhone", &frmContactAdd::txtHomePhone, &ContactRecord::Phone},
    {"txtMobile", &frmContactAdd::txtMobile, &ContactRecord::Mobile},
    {"txtEmail", &frmContactAdd::txtEmail, &ContactRecord::Email},
    {"txtWebsite", &frmContactAdd::txtWebsite, &ContactRecord::Website},
    {"txtBusinessPhone", &frmContactAdd::txtBusinessPhone, &ContactRecord::BusinessPhone},
    {"txtBusinessFax", &frmContactAdd::txtBusinessFax, &ContactRecord::BusinessFax},
    {"txtJobTitle", &frmContactAdd::txtJobTitle, &ContactRecord::JobTitle},
    {"txtCompany", &frmContactAdd::txtCompany, &ContactRecord::Company},
    {"txtStreeAddress", &frmContactAdd::txtStreeAddress, &ContactRecord::StreeAddress},
    {"txtCity", &frmContactAdd::txtCity, &ContactRecord::City},
    {"txtState", &frmContactAdd::txtState, &ContactRecord::State},
    {"txtZip", &frmContactAdd::txtZip, &ContactRecord::Zip},
    {"txtCountry", &frmContactAdd::txtCountry, &ContactRecord::Country},
};

frmContactAdd::frmContactAdd(ImageCodec& images, FilePicker& file_picker) : images_(images), file_picker_(file_picker) {
  cmdAddPhoto.Caption = "Add Photo";
  cmdDeletePhoto.Caption = "Delete Photo";
  cmdAddPhoto.Click = [this] { cmdAddPhoto_Click(); };
  cmdDeletePhoto.Click = [this] { cmdDeletePhoto_Click(); };
}

void frmContactAdd::ShowContact(const ContactRecord& contact) {
  for (const Field& field : kFields)
    (this->*field.box).Text = contact.*field.member;
}

ContactRecord frmContactAdd::Contact(const std::string& contact_id) const {
  ContactRecord contact;
  contact.ContactID = contact_id;
  for (const Field& field : kFields)
    contact.*field.member = (this->*field.box).Text;
  return contact;
}

void frmContactAdd::ShowStoredPhoto(const std::string& path) {
  if (DrawPicture(path))
    picPhotoTag = PhotoTag::Exist;
}

void frmContactAdd::VisitControls(ControlVisitor& visitor) {
  for (const Field& field : kFields)
    visitor.Visit(field.name, this->*field.box);
  visitor.Visit("picPhoto", picPhoto);
  visitor.Visit("cmdAddPhoto", cmdAddPhoto);
  visitor.Visit("cmdDeletePhoto", cmdDeletePhoto);
}

void frmContactAdd::cmdAddPhoto_Click() {
  const std::string path = file_picker_.OpenFile("Open Photo File", kPictureFilter);
  if (!path.empty() && DrawPicture(path))
    picPhotoTag = PhotoTag::Add;
}

void frmContactAdd::cmdDeletePhoto_Click() {
  picPhotoTag = PhotoTag::Delete;
  picPhoto.Drawing = Image();
}

bool frmContactAdd::DrawPicture(const std::string& path) {
  std::optional<Image> image = images_.LoadStretched(path, kPhotoWidth, kPhotoHeight);
  if (!image)
    return false;
  picPhoto.Drawing = *std::move(image);
  return true;
}

} // namespace kelmio

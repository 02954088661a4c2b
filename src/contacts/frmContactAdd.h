// The page of the contact editor: a contact's fields and photo.
#pragma once

#include "contacts/store/contact_file.h"
#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/picture_box.h"
#include "platform/dialogs.h"
#include "platform/image.h"

namespace kelmio {

/// Inside of the photo box, and so the size of a stored photo, in pixels.
inline constexpr int kPhotoWidth = 168;
inline constexpr int kPhotoHeight = 204;

/// What the photo box shows, and so what OK does with the stored photo.
enum class PhotoTag {
  None,   // no photo known: nothing is done
  Exist,  // the stored photo: nothing is done
  Add,    // a new picture: it replaces the stored photo
  Delete, // nothing any more: the stored photo goes
};

/// It reads and writes no contact by itself. User interface thread only; what it is given outlives it.
class frmContactAdd : public Form {
public:
  frmContactAdd(ImageCodec& images, FilePicker& file_picker);

  TextBox txtFullName;
  TextBox txtHomePhone;
  TextBox txtMobile;
  TextBox txtEmail;
  TextBox txtWebsite;
  TextBox txtBusinessPhone;
  TextBox txtBusinessFax;
  TextBox txtJobTitle;
  TextBox txtCompany;
  TextBox txtStreeAddress;
  TextBox txtCity;
  TextBox txtState;
  TextBox txtZip;
  TextBox txtCountry;
  PictureBox picPhoto;
  PhotoTag picPhotoTag = PhotoTag::None;
  Button cmdAddPhoto;
  Button cmdDeletePhoto;

  void ShowContact(const ContactRecord& contact);
  /// The fields as they stand, under that identifier.
  ContactRecord Contact(const std::string& contact_id) const;
  /// A file that is no picture changes nothing.
  void ShowStoredPhoto(const std::string& path);

  std::string_view Name() const override { return "frmContactAdd"; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  struct Field {
    const char* name; // of the control
    TextBox frmContactAdd::*box;
    std::string ContactRecord::*member;
  };
  static const Field kFields[];

  void cmdAddPhoto_Click();
  void cmdDeletePhoto_Click();
  /// False when there is no such picture; the box then stays as it is.
  bool DrawPicture(const std::string& path);

  ImageCodec& images_;
  FilePicker& file_picker_;
};

} // namespace kelmio

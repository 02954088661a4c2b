#include "shell/frmAbout.h"

#include <string>

#include "core/mGeneral.h"
#include "core/product.h"

namespace kelmio {

frmAbout::frmAbout(const House& house)
    : house_(house), errors_(house.errors), jcForms1({*this, house_.desktop, errors_}) {
  Caption = "About Kelmio";
  lblProduct.Caption = product::kName;
  lblVersion.Caption = std::string("Version ") + product::Version();
  lblPurpose.Caption = "Caller ID, Answering Machine and Call Recorder";
  lblLicense.Caption = "Free software under the GNU General Public License, version 3 or later. "
                       "It comes with no warranty, as far as the law permits.";
  lblWebsite.Caption = product::Website();
  lblContact.Caption = product::Contact();
  cmdOK.Caption = "OK";
  lblWebsite.Click = [this] { Open(product::Website()); };
  lblContact.Click = [this] { Open(std::string("mailto:") + product::Contact()); };
  cmdOK.Click = [this] { Visible = false; };
  jcForms1.ThemeColor = house_.frame_theme;
  jcForms1.MaxButton = false;
  jcForms1.MinButton = false;
  jcForms1.Refresh();
}

void frmAbout::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("jcForms1", jcForms1);
  visitor.Visit("lblProduct", lblProduct);
  visitor.Visit("lblVersion", lblVersion);
  visitor.Visit("lblPurpose", lblPurpose);
  visitor.Visit("lblLicense", lblLicense);
  visitor.Visit("lblWebsite", lblWebsite);
  visitor.Visit("lblContact", lblContact);
  visitor.Visit("cmdOK", cmdOK);
}

void frmAbout::Open(const std::string& address) {
  mGeneral::ShellOpen(house_.link_opener, address, "Open");
}

} // namespace kelmio

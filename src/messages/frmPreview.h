// The preview pane: who is behind the selected message.
#pragma once

#include "controls/form.h"
#include "controls/picture_box.h"
#include "core/settings.h"
#include "messages/contact_card.h"
#include "messages/message_list.h"

namespace kelmio {

/// Follows the selection of the list. User interface thread only.
class frmPreview : public Form {
public:
  frmPreview(const Settings& settings, const MessageList& list, ContactLookup lookup, MessageLinks& links);

  PictureBox picPhoto;
  Label lblName;
  Label lblNumber;
  Label lblCompany;
  Label lblEmail;
  Label lblMobile;
  Label lblBusinessPhone;

  void Load() override;
  /// Fills the pane from the selected row; without one the old text stays.
  void PreviewMessage();

  std::string_view Name() const override { return "frmPreview"; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void ForgetContact();

  const Settings& settings_;
  const MessageList& list_;
  ContactLookup lookup_;
};

} // namespace kelmio

// What a modem is and how it wants to be spoken to, by its own words.
#pragma once

#include <optional>
#include <string>

#include "drivers/voice_modem/modem_link.h"
#include "drivers/voice_modem/modem_settings.h"
#include "drivers/voice_modem/voice_formats.h"

namespace kelmio {

struct ModemIdentity {
  ModemKind kind = ModemKind::Silent;
  std::string model;                 // in words; may be empty
  std::optional<VoiceFormat> format; // of a voice modem; nothing when it has none that this program can use
  int line_device = 1;               // +VLS for the line alone
  int joined_device = 3;             // +VLS for the line with the telephone beside the modem
};

/// Resets the modem and asks it. Takes some two seconds; rings that come meanwhile go to the link's sinks.
ModemIdentity IdentifyModem(ModemLink& link, const ModemClock& clock);

/// Leaves the modem as it is after power-up, but without echo and auto answer. Takes a second or two.
void ResetModem(ModemLink& link, const ModemClock& clock);

/// Enters the voice class, which some units refuse once, or say to have done and haven't.
bool EnterVoiceClass(ModemLink& link, const ModemClock& clock);

} // namespace kelmio

// The wave formats that a line can be recorded in.
#pragma once

#include <vector>

#include "telephony/tapi_control/wave_format.h"

namespace kelmio {

/// True for PCM of 8 or 16 bits, mu-law, A-law, IMA ADPCM (mono or stereo) and GSM 6.10 (mono) at the usual
/// rates, when all fields of the record agree with each other. Any thread.
bool IsRecordable(const WaveFormatRecord& format);

/// Each recordable format with its usual block size, by coding, then rate, then channels.
std::vector<WaveFormatRecord> RecordableFormats();

} // namespace kelmio

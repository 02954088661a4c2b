// The accounts of `Lines.ini`, and their passwords beside it.
#pragma once

#include <string>
#include <vector>

#include "drivers/lines_file.h"
#include "drivers/sip/sip_settings.h"

namespace kelmio {

/// The section, and the name to which the device number belongs, of account `number`, which is 1 or more.
std::string AccountSection(int number);

/// The numbers of the accounts in the file, the smallest first. One whose server is empty is not among them.
std::vector<int> AccountNumbers(const LinesFile& file);

/// The account with its password; one that is not there reads as one that isn't set up. A value that makes no sense
/// falls back to its default, with a note.
SipSettings ReadAccount(LinesFile& file, int number);

/// Writes section and password; comments and foreign keys stay. The password stands in a file of its own that only the
/// user can read. False when one of them can't be written.
bool WriteAccount(const LinesFile& file, int number, const SipSettings& settings);

/// Deletes section and password. False when one of them is still there.
bool RemoveAccountFiles(const LinesFile& file, int number);

/// The file that holds the password of account `number`.
std::string PasswordPath(const LinesFile& file, int number);

} // namespace kelmio

// General helpers: paths, files, numbers for the eye, windows, colours.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "controls/basic_controls.h"

namespace kelmio {
class Desktop;
class Form;
class LinkOpener;
class ListView;
} // namespace kelmio

/// No failure is shown and none throws. What touches controls belongs to the user interface thread, the rest to
/// any.
namespace kelmio::mGeneral {

/// False for a folder and for a blank path.
bool FileExists(const std::string& path);
/// Makes the folder if it is missing. Always true.
bool EnsureFolder(const std::string& path);
/// Makes each missing folder along the path.
void MakePath(const std::string& path);
/// Deletes all that is in the folder; the folder stays. Links are deleted, never followed.
void DeleteFolderContents(const std::string& path);
/// True on success; a failure leaves the target as it was.
bool CopyFileTo(const std::string& source, const std::string& target, bool fail_if_exists);

/// Cuts the first bracketed piece out, trims, and closes the path with a backslash, or a slash when asked.
std::string NormalizePath(std::string_view path, bool slash = false);

/// "1.50 KB"; empty for a size below 1.
std::string FormatByteSize(double size);
/// "hh:nn:ss". Exactly 3600 seconds are 60 minutes.
std::string FormatSeconds(std::int64_t seconds);

/// Puts a window into the middle of its owner, or of the screen without one. A window whose new place has no
/// bit in common between left and top stays where it is.
void CenterForm(Form& window, const Desktop& desktop, const Form* owner = nullptr);

/// Colours a row of a list, which counts from 1, with all its cells.
void SetListItemColor(ListView& list, std::size_t row, Color color);

/// The four numbers of a Windows program file's version data, joined by points; empty if it has none.
std::string FileVersionText(const std::string& path);

/// The text up to its first zero.
std::string StripNull(std::string_view text);

/// Hands a file or an address to the desktop with a verb such as "Open".
void ShellOpen(LinkOpener& opener, const std::string& file, const std::string& verb, const std::string& parameters = {},
               const std::string& folder = {}, int show_mode = 1);

/// A colour of the desktop's scheme (high bit set, its number in the low byte) as the plain colour that the
/// classic scheme has for it; a plain colour as it is; -1 for anything else.
Color TranslateColor(Color color);

/// The system's text for an error number, up to its first line end, trimmed.
std::string SystemErrorText(int error);

} // namespace kelmio::mGeneral

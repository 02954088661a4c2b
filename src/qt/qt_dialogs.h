// Boxes, pickers and what else the windows ask of the desktop.
#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

#include "platform/desktop.h"
#include "platform/dialogs.h"

namespace kelmio {

/// The boxes stand over the window that is in use.
class QtMessageBoxes : public MessageBoxes {
public:
  BoxAnswer Show(const std::string& text, const std::string& title, BoxButtons buttons, BoxIcon icon,
                 int default_button) override;
};

/// Starts in the folder that was picked last in this run, at first in the user's home.
class QtFolderPicker : public FolderPicker {
public:
  std::string BrowseForFolder(const std::string& title) override;

private:
  QString last_;
};

/// Starts in the folder of the file that was picked last in this run, at first in the user's home. A pattern such as
/// "*.jpg" takes "*.JPG" too.
class QtFilePicker : public FilePicker {
public:
  std::string OpenFile(const std::string& title, const std::string& filter) override;

private:
  QString last_;
};

/// The filter's entries as the toolkit's dialog takes them.
QStringList NameFilters(const QString& filter);

class QtColorPicker : public ColorPicker {
public:
  std::optional<std::int32_t> PickColor(std::int32_t initial) override;
};

/// Offers the files in the forms that file managers here read, and the file-drop block beside them.
class QtFileClipboard : public FileClipboard {
public:
  bool CopyFiles(const std::vector<std::string>& paths) override;
};

/// The form in which the file-drop block stands on the clipboard.
inline constexpr const char* kFileDropMimeType = "application/x-kelmio-file-drop";

/// Opens web and mail addresses, and nothing else: what is opened stands in a contact's field, which a file from
/// elsewhere may have filled.
class QtLinkOpener : public LinkOpener {
public:
  void Open(const ShellRequest& request) override;
};

/// The address that a text stands for: http, https or mailto, where a text without any of these names a web site.
/// Nothing for all else, such as local files. A mail address keeps no headers: they could attach files.
std::optional<QUrl> LinkAddress(const QString& text);

} // namespace kelmio

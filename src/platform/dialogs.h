// Boxes, pickers and modal windows, and what else the windows ask of the desktop.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelmio {

class Form;

enum class BoxButtons { Ok, YesNo, YesNoCancel };
enum class BoxIcon { None, Warning, Stop };
enum class BoxAnswer { Ok, Yes, No, Cancel };

/// User interface thread only. Pending events run while a box is open.
class MessageBoxes {
public:
  virtual ~MessageBoxes() = default;
  /// `default_button` counts from 1. An empty title is the program's name. Esc and the close box give Cancel, or No
  /// where there is no Cancel, or Ok.
  virtual BoxAnswer Show(const std::string& text, const std::string& title, BoxButtons buttons, BoxIcon icon,
                         int default_button) = 0;
};

/// User interface thread only. Pending events run while it is open.
class FolderPicker {
public:
  virtual ~FolderPicker() = default;
  /// Full path of a folder, or empty text when the user gives up.
  virtual std::string BrowseForFolder(const std::string& title) = 0;
};

/// User interface thread only. Pending events run while it is open.
class FilePicker {
public:
  virtual ~FilePicker() = default;
  /// Full path of an existing file, or empty text when the user gives up. `filter` is pairs of a description and
  /// patterns joined by ";", all joined by "|"; what has no counterpart at its end is left out.
  virtual std::string OpenFile(const std::string& title, const std::string& filter) = 0;
};

/// User interface thread only. Pending events run while it is open.
class ColorPicker {
public:
  virtual ~ColorPicker() = default;
  /// Nothing when the user gives up. Colours have red in the lowest byte.
  virtual std::optional<std::int32_t> PickColor(std::int32_t initial) = 0;
};

/// Files on the clipboard, as file managers paste them. User interface thread only.
class FileClipboard {
public:
  virtual ~FileClipboard() = default;
  /// Full paths. False when the clipboard doesn't take them.
  virtual bool CopyFiles(const std::vector<std::string>& paths) = 0;
};

/// The look of bars and windows. User interface thread only.
class Appearance {
public:
  virtual ~Appearance() = default;
  /// 0 Office 2000, 1 Office XP, 2 Office 2003, 3 the desktop's own, 4 Whidbey; others are taken as 2.
  virtual void SetVisualTheme(int theme) = 0;
  virtual int VisualTheme() const = 0;
  /// Colour variant of theme 2: 1 blue, 2 olive, 3 silver, 6 automatic.
  virtual void SetSystemTheme(int theme) = 0;
};

/// Whether a window that opens takes the focus from the one that has it.
enum class Activation { Takes, Leaves };

/// Shows windows by their forms. User interface thread only.
class Windows {
public:
  virtual ~Windows() = default;
  /// Calls `Load`, shows the window centred over `owner`, and returns once the form's `Visible` is false again.
  /// Pending events, calls among them, run meanwhile.
  virtual void ShowModal(Form& form, Form* owner) = 0;
  /// Calls `Load` and shows the window beside the others, until the form's `Visible` is false again; returns at once,
  /// with the window on the screen. The form is held as long as its window stands; a caller who lets pending events
  /// run holds it too, since the window may close meanwhile. A window that takes the focus opens once: where one of
  /// its name stands, that one comes to the front. Of those that leave it, several may stand.
  virtual void Show(std::shared_ptr<Form> form, Activation activation) = 0;
  /// Closes what `Show` has opened, at once and without asking the forms.
  virtual void CloseAll() = 0;
};

} // namespace kelmio

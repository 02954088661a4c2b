// Windows by the names of their forms.
#pragma once

#include <QWidget>

#include <memory>
#include <string_view>

#include "controls/form.h"

namespace kelmio {

/// The bare layout of that name, not bound to anything; nothing when there is none. A new window is a file in
/// `forms/`, listed in the CMakeLists.txt beside this file.
std::unique_ptr<QWidget> MakeLayout(std::string_view name);

/// The window of a form, bound to it; it shows itself as soon as the form says so. An unknown name gives an empty
/// window, and controls without a widget are logged. The form outlives the window.
std::unique_ptr<QWidget> MakeWindow(Form& form, std::string_view name);

} // namespace kelmio

// Puts a form's controls and the widgets of its window together.
#pragma once

#include <QWidget>

#include <string>
#include <vector>

#include "controls/form.h"

namespace kelmio {

/// Binds the form to the window, and each of its controls to the widget of the same name. Returns the names of the
/// controls that have no widget, or one of the wrong kind: a finished layout has none.
/// The form outlives the window, and has one window at a time. User interface thread only.
std::vector<std::string> Bind(QWidget& window, Form& form);

} // namespace kelmio

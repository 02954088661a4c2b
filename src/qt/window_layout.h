// The layout of a window's bars and panes as a text to store.
#pragma once

#include <QMainWindow>

#include <string>

namespace kelmio {

std::string SaveLayout(const QMainWindow& window);

/// False, and no change, for an empty text or one that isn't such a layout.
bool RestoreLayout(QMainWindow& window, const std::string& state);

} // namespace kelmio

#include "qt/window_layout.h"

namespace kelmio {

namespace {

/// Goes up when old layouts no longer fit the bars and panes; they are ignored then.
constexpr int kLayoutVersion = 1;

} // namespace

std::string SaveLayout(const QMainWindow& window) {
  return window.saveState(kLayoutVersion).toBase64().toStdString();
}

bool RestoreLayout(QMainWindow& window, const std::string& state) {
  return !state.empty() &&
         window.restoreState(QByteArray::fromBase64(QByteArray::fromStdString(state)), kLayoutVersion);
}

} // namespace kelmio

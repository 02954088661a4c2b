#include "qt/xdg_auto_start.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

#include <string_view>
#include <utility>

namespace kelmio {

namespace {

/// A value as the Desktop Entry Specification writes strings.
std::string EntryString(std::string_view text) {
  std::string value;
  for (const char c : text)
    switch (c) {
    case '\\':
      value += "\\\\";
      break;
    case '\n':
      value += "\\n";
      break;
    case '\t':
      value += "\\t";
      break;
    case '\r':
      value += "\\r";
      break;
    default:
      value += c;
    }
  return value;
}

/// One argument of the Exec key, before it is written as a string: always quoted, with the four characters that
/// stay special inside quotes escaped and the sign of the field codes doubled.
std::string ExecArgument(std::string_view argument) {
  std::string quoted = "\"";
  for (const char c : argument) {
    if (c == '"' || c == '`' || c == '$' || c == '\\')
      quoted += '\\';
    quoted += c;
    if (c == '%')
      quoted += '%';
  }
  return quoted + '"';
}

QString EntryPath(const std::string& folder) {
  return QDir(QFile::decodeName(folder.c_str())).filePath(QStringLiteral("kelmio.desktop"));
}

} // namespace

XdgAutoStart::XdgAutoStart(std::string folder, std::vector<std::string> environment)
    : folder_(std::move(folder)), environment_(std::move(environment)) {}

std::string XdgAutoStart::DefaultFolder() {
  const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return QFile::encodeName(QDir(config).filePath(QStringLiteral("autostart"))).toStdString();
}

void XdgAutoStart::Enable(const std::string& executable) {
  // The name of a program must not hold an equals sign in an Exec key.
  if (executable.empty() || executable.find('=') != std::string::npos) {
    Disable();
    return;
  }
  std::string command = environment_.empty() ? "" : "env ";
  for (const std::string& variable : environment_)
    command += ExecArgument(variable) + ' ';
  command += ExecArgument(executable);
  const std::string entry = "[Desktop Entry]\n"
                            "Type=Application\n"
                            "Name=Kelmio\n"
                            "Exec=" +
                            EntryString(command) + "\nTryExec=" + EntryString(executable) +
                            "\nTerminal=false\n"
                            "X-GNOME-Autostart-enabled=true\n";
  if (!QDir().mkpath(QFile::decodeName(folder_.c_str())))
    return;
  QSaveFile file(EntryPath(folder_));
  if (file.open(QIODevice::WriteOnly) && file.write(entry.data(), static_cast<qint64>(entry.size())) >= 0)
    file.commit();
}

void XdgAutoStart::Disable() {
  QFile::remove(EntryPath(folder_));
}

} // namespace kelmio

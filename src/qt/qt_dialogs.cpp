#include "qt/qt_dialogs.h"

#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QRegularExpression>

#include <vector>

#include "core/file_drop.h"
#include "qt/units.h"

namespace kelmio {

namespace {

std::vector<QMessageBox::StandardButton> ToButtons(BoxButtons buttons) {
  switch (buttons) {
  case BoxButtons::YesNo:
    return {QMessageBox::Yes, QMessageBox::No};
  case BoxButtons::YesNoCancel:
    return {QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel};
  case BoxButtons::Ok:
    break;
  }
  return {QMessageBox::Ok};
}

BoxAnswer ToAnswer(QMessageBox::StandardButton button) {
  switch (button) {
  case QMessageBox::Yes:
    return BoxAnswer::Yes;
  case QMessageBox::No:
    return BoxAnswer::No;
  case QMessageBox::Cancel:
    return BoxAnswer::Cancel;
  default:
    return BoxAnswer::Ok;
  }
}

} // namespace

BoxAnswer QtMessageBoxes::Show(const std::string& text, const std::string& title, BoxButtons buttons, BoxIcon icon,
                               int default_button) {
  QMessageBox box(QApplication::activeWindow());
  box.setWindowTitle(title.empty() ? QStringLiteral("Kelmio") : ToText(title));
  box.setTextFormat(Qt::PlainText);
  box.setText(ToText(text));
  if (icon != BoxIcon::None)
    box.setIcon(icon == BoxIcon::Warning ? QMessageBox::Warning : QMessageBox::Critical);
  const std::vector<QMessageBox::StandardButton> shown = ToButtons(buttons);
  for (const QMessageBox::StandardButton button : shown)
    box.addButton(button);
  // The last one is also the answer of the Esc key and the close box.
  box.setEscapeButton(shown.back());
  if (default_button >= 1 && default_button <= static_cast<int>(shown.size()))
    box.setDefaultButton(shown[static_cast<std::size_t>(default_button) - 1]);
  box.exec();
  // None was clicked when the program ends under the box.
  const QAbstractButton* clicked = box.clickedButton();
  return ToAnswer(clicked != nullptr ? box.standardButton(const_cast<QAbstractButton*>(clicked)) : shown.back());
}

std::string QtFolderPicker::BrowseForFolder(const std::string& title) {
  const QString start = QDir(last_).exists() && !last_.isEmpty() ? last_ : QDir::homePath();
  const QString folder = QFileDialog::getExistingDirectory(QApplication::activeWindow(), ToText(title), start);
  if (!folder.isEmpty())
    last_ = folder;
  return QFile::encodeName(folder).toStdString();
}

QStringList NameFilters(const QString& filter) {
  const QStringList parts = filter.split('|');
  QStringList filters;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    // The toolkit shows what stands before its own brackets and takes the patterns from inside them.
    const QString description = parts[i].section(QStringLiteral(" ("), 0, 0);
    QStringList patterns;
    for (QString pattern : parts[i + 1].split(';', Qt::SkipEmptyParts)) {
      pattern.replace('(', '?').replace(')', '?');
      patterns.append(pattern == QStringLiteral("*.*") ? QStringLiteral("*") : pattern);
      if (pattern.toUpper() != pattern)
        patterns.append(pattern.toUpper());
    }
    if (!description.isEmpty() && !patterns.isEmpty())
      filters.append(description + " (" + patterns.join(' ') + ')');
  }
  return filters;
}

std::string QtFilePicker::OpenFile(const std::string& title, const std::string& filter) {
  const QString start = last_.isEmpty() || !QDir(last_).exists() ? QDir::homePath() : last_;
  QFileDialog dialog(QApplication::activeWindow(), ToText(title), start);
  dialog.setFileMode(QFileDialog::ExistingFile);
  dialog.setNameFilters(NameFilters(ToText(filter)));
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
    return {};
  const QString file = dialog.selectedFiles().front();
  last_ = QFileInfo(file).absolutePath();
  return QFile::encodeName(file).toStdString();
}

std::optional<std::int32_t> QtColorPicker::PickColor(std::int32_t initial) {
  const QColor color = QColorDialog::getColor(ToColor(initial), QApplication::activeWindow());
  if (!color.isValid())
    return std::nullopt;
  return color.red() | color.green() << 8 | color.blue() << 16;
}

bool QtFileClipboard::CopyFiles(const std::vector<std::string>& paths) {
  if (paths.empty())
    return false;
  QList<QUrl> urls;
  QByteArray lines = "copy";
  for (const std::string& path : paths) {
    urls.append(QUrl::fromLocalFile(QFile::decodeName(path.c_str())));
    lines += '\n' + urls.back().toEncoded();
  }
  auto* data = new QMimeData;
  data->setUrls(urls);
  // What the desktops' file managers put beside the list to tell a copy from a move.
  data->setData(QStringLiteral("x-special/gnome-copied-files"), lines);
  data->setData(QStringLiteral("application/x-kde-cutselection"), "0");
  data->setData(QString::fromLatin1(kFileDropMimeType), QByteArray::fromStdString(FileDropBlock(paths)));
  QClipboard& clipboard = *QGuiApplication::clipboard();
  clipboard.setMimeData(data);
  const QMimeData* held = clipboard.mimeData();
  return held != nullptr && held->urls() == urls;
}

std::optional<QUrl> LinkAddress(const QString& text) {
  const QString trimmed = text.trimmed();
  for (const QChar c : trimmed)
    if (c.isSpace() || c.category() == QChar::Other_Control)
      return std::nullopt;

  static const QRegularExpression mail(QStringLiteral("^mailto:([^?]+)"), QRegularExpression::CaseInsensitiveOption);
  if (const auto match = mail.match(trimmed); match.hasMatch()) {
    QUrl address;
    address.setScheme(QStringLiteral("mailto"));
    address.setPath(match.captured(1), QUrl::DecodedMode);
    return address;
  }

  static const QRegularExpression web(QStringLiteral("^https?://"), QRegularExpression::CaseInsensitiveOption);
  // "name:80" is a host with its port, "name:other" a scheme of its own.
  static const QRegularExpression other(QStringLiteral("^[a-z][a-z0-9+.-]*:(?!\\d+(/|$))"),
                                        QRegularExpression::CaseInsensitiveOption);
  static const QRegularExpression host(QStringLiteral("^[\\p{L}\\p{N}\\[]"));
  const bool is_web = web.match(trimmed).hasMatch();
  if (!is_web && (other.match(trimmed).hasMatch() || !host.match(trimmed).hasMatch()))
    return std::nullopt;
  const QUrl address(is_web ? trimmed : QStringLiteral("https://") + trimmed);
  if (!address.isValid() || address.host().isEmpty())
    return std::nullopt;
  return address;
}

void QtLinkOpener::Open(const ShellRequest& request) {
  if (const auto address = LinkAddress(ToText(request.file)))
    QDesktopServices::openUrl(*address);
}

} // namespace kelmio

#include "qt/command_icons.h"

#include <QFile>

// Outside the namespace, as the resource compiler wants it: a static library's resources are only linked when asked
// for.
static void InitResource() {
  Q_INIT_RESOURCE(desktop);
}

namespace kelmio {

void LoadIcons() {
  InitResource();
}

QIcon CommandIcon(int command) {
  LoadIcons();
  const QString path = QStringLiteral(":/icons/%1.svg").arg(command);
  return QFile::exists(path) ? QIcon(path) : QIcon();
}

QIcon TreeIcon(int image) {
  LoadIcons();
  const QString path = QStringLiteral(":/icons/tree-%1.svg").arg(image);
  return QIcon(QFile::exists(path) ? path : QStringLiteral(":/icons/tree-1.svg"));
}

QIcon ProgramIcon() {
  LoadIcons();
  return QIcon(QStringLiteral(":/icons/kelmio.svg"));
}

} // namespace kelmio

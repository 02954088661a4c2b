// Shows one of the program's own pages.
#pragma once

#include <QTextBrowser>

#include <functional>

namespace kelmio {

/// Pages, their style sheets and pictures come from local files and from inside the program; nothing is fetched from
/// the web. In a style sheet `palette(link)`, `palette(mid)` and `palette(alternate-base)` stand for the theme's
/// colours.
class PageView : public QTextBrowser {
public:
  explicit PageView(QWidget* parent = nullptr);

  /// The user clicked a link, or asks for it by the keyboard; the address is complete.
  std::function<void(const QUrl& address)> on_link = [](const QUrl&) {};

  QVariant loadResource(int type, const QUrl& name) override;

protected:
  void changeEvent(QEvent* event) override;
  /// The window's model goes back and forward.
  void keyPressEvent(QKeyEvent* event) override;

private:
  QString ThemedSheet(const QByteArray& sheet) const;
};

} // namespace kelmio

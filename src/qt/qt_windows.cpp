#include "qt/qt_windows.h"

#include <QApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QPointer>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

#include "controls/form.h"
#include "qt/form_binding.h"
#include "qt/form_factory.h"
#include "qt/handler_guard.h"
#include "qt/units.h"

namespace kelmio {

namespace {

/// Tells the form of the Esc key, and `hidden` once the window has hidden itself. Goes with the window.
class WindowWatch : public QObject {
public:
  WindowWatch(QWidget& window, Form& form, std::function<void()> hidden)
      : QObject(&window), form_(form), hidden_(std::move(hidden)) {
    window.installEventFilter(this);
  }

protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Hide && !event->spontaneous())
      hidden_();
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
      RunHandler([this] { form_.EscapePressed(); });
      return true;
    }
    return QObject::eventFilter(watched, event);
  }

private:
  Form& form_;
  std::function<void()> hidden_;
};

/// In the middle of the owner's window; with no owner to be seen, of the screen. All of it is on the screen.
void Center(QWidget& window, Form& form, const QWidget* owner) {
  const QSize known(ToPixels(form.Width), ToPixels(form.Height));
  const QRect screen = window.screen()->availableGeometry();
  const bool seen = owner != nullptr && owner->isVisible() && !owner->isMinimized();
  // The window has none before it is shown, but it will be like its owner's.
  const QSize frame = seen ? owner->frameGeometry().size() - owner->size() : QSize(0, 0);
  const QSize size = (known.isEmpty() ? window.size() : known).boundedTo(screen.size() - frame);
  const QRect room = seen ? owner->frameGeometry() : screen;
  const QPoint middle = room.center() - QPoint(size.width() / 2, size.height() / 2);
  const QPoint corner(std::clamp(middle.x(), screen.left(), screen.right() + 1 - frame.width() - size.width()),
                      std::clamp(middle.y(), screen.top(), screen.bottom() + 1 - frame.height() - size.height()));
  form.Width = ToTwips(size.width());
  form.Height = ToTwips(size.height());
  form.Left = ToTwips(corner.x());
  form.Top = ToTwips(corner.y());
}

/// A window that knows its place may leave its size to its layout.
void TakeLayoutSize(const QWidget& window, Form& form) {
  if (form.Width == 0 || form.Height == 0) {
    form.Width = ToTwips(window.width());
    form.Height = ToTwips(window.height());
  }
}

} // namespace

void QtWindows::ShowModal(Form& form, Form* owner) {
  const auto [shown, is_first] = shown_.emplace(form.Name(), &form);
  if (!is_first) {
    if (QWidget* window = WindowOf(*shown->second)) {
      window->raise();
      window->activateWindow();
    }
    return;
  }
  form.Visible = false;
  const QPointer<QWidget> window = MakeWindow(form, form.Name()).release();
  QWidget* over = owner != nullptr ? WindowOf(*owner) : QApplication::activeWindow();
  const Qt::WindowFlags own_frame = window->windowFlags() & Qt::FramelessWindowHint;
  window->setParent(over != nullptr ? over->window() : nullptr, Qt::Dialog | own_frame);
  window->setWindowModality(Qt::ApplicationModal);
  RunHandler([&] { form.Load(); });
  if (form.Centered())
    Center(*window, form, over != nullptr ? over->window() : nullptr);
  else
    TakeLayoutSize(*window, form);

  QEventLoop loop;
  new WindowWatch(*window, form, [&loop] { loop.quit(); });
  QObject::connect(window.data(), &QObject::destroyed, &loop, [&loop] { loop.quit(); });
  form.Visible = true;
  // Behind the refresh that shows the window, for a form that has changed its mind by then.
  QMetaObject::invokeMethod(
      &loop,
      [&] {
        if (!form.Visible)
          loop.quit();
      },
      Qt::QueuedConnection);
  loop.exec(QEventLoop::DialogExec);

  delete window; // nothing when it has gone with its owner
  form.Visible = false;
  shown_.erase(shown);
}

QtWindows::~QtWindows() {
  CloseAll();
}

void QtWindows::Show(std::shared_ptr<Form> form, Activation activation) {
  if (activation == Activation::Takes)
    for (const auto& standing : beside_)
      if (standing->form->Name() == form->Name() && standing->form->Visible) {
        standing->window->raise();
        standing->window->activateWindow();
        return;
      }
  form->Visible = false;
  auto standing = std::make_unique<Beside>();
  standing->form = form;
  standing->window = MakeWindow(*form, form->Name());
  QWidget& window = *standing->window;
  beside_.push_back(std::move(standing));
  if (activation == Activation::Leaves)
    window.setAttribute(Qt::WA_ShowWithoutActivating);
  RunHandler([&] { form->Load(); });
  if (form->Centered())
    Center(window, *form, QApplication::activeWindow());
  else
    TakeLayoutSize(window, *form);
  const Form* key = form.get();
  new WindowWatch(window, *form, [this, key, context = &window] {
    QMetaObject::invokeMethod(
        context, [this, key] { Drop(key); }, Qt::QueuedConnection);
  });
  form->Visible = true;
  ShowFormNow(window);
}

void QtWindows::Drop(const Form* form) {
  const auto found =
      std::find_if(beside_.begin(), beside_.end(), [&](const auto& standing) { return standing->form.get() == form; });
  if (found == beside_.end() || (*found)->form->Visible)
    return;
  // The window goes once no handler of its own is running any more, and then the form.
  QWidget* window = (*found)->window.release();
  QObject::connect(
      window, &QObject::destroyed, QCoreApplication::instance(), [held = (*found)->form] {}, Qt::QueuedConnection);
  window->deleteLater();
  beside_.erase(found);
}

void QtWindows::CloseAll() {
  beside_.clear();
}

} // namespace kelmio

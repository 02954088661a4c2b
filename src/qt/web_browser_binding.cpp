// The browser of the program's own pages.
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QTextDocument>

#include <memory>

#include "controls/web_browser.h"
#include "qt/bindings.h"
#include "qt/page_view.h"
#include "qt/units.h"

namespace kelmio {

namespace {

class WebBrowserBinding : public ControlBinding {
public:
  WebBrowserBinding(PageView& widget, WebBrowser& model)
      : ControlBinding(model, widget), widget_(widget), model_(model) {
    widget.on_link = [this](const QUrl& address) {
      RunHandler([&] { model_.Navigate(address.toString().toStdString()); });
    };
    model.on_print = [this] { Print(); };
    model.on_page_setup = [this] { PageSetup(); };
  }
  ~WebBrowserBinding() override {
    model_.on_print = [] {};
    model_.on_page_setup = [] {};
  }

protected:
  void Show() override {
    const QUrl address(QString::fromStdString(model_.Address()));
    if (address.isEmpty() || !model_.Busy())
      return;
    if (loads_ != model_.Loads()) {
      loads_ = model_.Loads();
      widget_.reload();
    }
    widget_.setSource(address, QTextDocument::HtmlResource);
    if (address.hasFragment())
      widget_.scrollToAnchor(address.fragment());
    RunHandler([this] { model_.DocumentComplete(widget_.documentTitle().toStdString()); });
  }

private:
  QPrinter& Printer() {
    if (printer_ == nullptr)
      printer_ = std::make_unique<QPrinter>(QPrinter::HighResolution);
    return *printer_;
  }

  // The window may close under a dialog, and takes all of this with it.
  void Print() {
    auto* dialog = new QPrintDialog(&Printer(), widget_.window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, qOverload<QPrinter*>(&QPrintDialog::accepted), this, [this](QPrinter* printer) {
      const std::unique_ptr<QTextDocument> page(widget_.document()->clone());
      page->print(printer);
    });
    dialog->open();
  }

  void PageSetup() {
    auto* dialog = new QPageSetupDialog(&Printer(), widget_.window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
  }

  PageView& widget_;
  WebBrowser& model_;
  std::unique_ptr<QPrinter> printer_;
  int loads_ = 0;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, WebBrowser& browser) {
  auto* target = dynamic_cast<PageView*>(&widget);
  return target != nullptr ? new WebBrowserBinding(*target, browser) : nullptr;
}

} // namespace kelmio

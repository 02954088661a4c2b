// Status bars, with their date and clock.
#include <QEvent>
#include <QLabel>
#include <QLocale>
#include <QStatusBar>
#include <QTime>
#include <QTimer>

#include <algorithm>
#include <vector>

#include "qt/bindings.h"
#include "qt/units.h"

namespace kelmio {

namespace {

/// The clock shows minutes; a computer that wakes from sleep is right again after this time at most.
constexpr int kLongestWaitMs = 5000;
constexpr int kMinuteMs = 60000;
/// Least widths in characters, so that the panels don't jump with each text.
constexpr int kTextPanelCharacters = 12;

/// The locale's short time, which has seconds in a few locales, without them.
QString ClockFormat() {
  return QLocale().timeFormat(QLocale::ShortFormat).remove(QStringLiteral(":ss"));
}

class StatusBarBinding : public ControlBinding {
public:
  StatusBarBinding(QStatusBar& widget, StatusBar& model)
      : ControlBinding(model, widget), widget_(widget), model_(model) {
    clock_.setSingleShot(true);
    connect(&clock_, &QTimer::timeout, this, [this] { ShowClock(); });
    widget.installEventFilter(this);
  }

protected:
  void Show() override {
    if (labels_.size() != model_.Panels().size())
      MakePanels();
    for (std::size_t panel = 0; panel < labels_.size(); ++panel)
      if (model_.Panels()[panel].kind == StatusBar::PanelKind::Text)
        labels_[panel]->setText(ToText(model_.Panels()[panel].text));
    widget_.setVisible(model_.Visible);
    ShowClock();
    MakeRoom();
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Show)
      ShowClock();
    else if (event->type() == QEvent::Resize)
      MakeRoom();
    else if (event->type() == QEvent::Hide)
      clock_.stop(); // nobody looks: a hidden window doesn't wake the computer
    return ControlBinding::eventFilter(watched, event);
  }

private:
  void MakePanels() {
    for (QLabel* label : labels_)
      delete label;
    labels_.clear();
    for (std::size_t panel = 0; panel < model_.Panels().size(); ++panel) {
      auto* label = new QLabel(&widget_);
      label->setTextFormat(Qt::PlainText);
      label->setProperty("panel", true);
      const bool first = panel == 0;
      if (first)
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long text never widens the window
      else if (model_.Panels()[panel].kind == StatusBar::PanelKind::Text)
        label->setMinimumWidth(label->fontMetrics().averageCharWidth() * kTextPanelCharacters);
      widget_.addWidget(label, first ? 1 : 0);
      label->show();
      labels_.push_back(label);
    }
  }

  // In a narrow window the date gives way to what the system is doing.
  void MakeRoom() {
    int wanted = 0;
    for (const QLabel* label : labels_)
      wanted += label->sizeHint().width();
    for (std::size_t panel = 0; panel < labels_.size(); ++panel)
      if (model_.Panels()[panel].kind == StatusBar::PanelKind::Date)
        labels_[panel]->setVisible(wanted <= widget_.width());
  }

  void ShowClock() {
    const QDateTime now = QDateTime::currentDateTime();
    bool needed = false;
    for (std::size_t panel = 0; panel < labels_.size(); ++panel) {
      const StatusBar::PanelKind kind = model_.Panels()[panel].kind;
      if (kind == StatusBar::PanelKind::Date)
        labels_[panel]->setText(QLocale().toString(now.date(), QLocale::ShortFormat));
      else if (kind == StatusBar::PanelKind::Time)
        labels_[panel]->setText(QLocale().toString(now.time(), ClockFormat()));
      needed = needed || kind != StatusBar::PanelKind::Text;
    }
    if (needed && widget_.isVisible())
      clock_.start(std::min(kLongestWaitMs, kMinuteMs - now.time().msecsSinceStartOfDay() % kMinuteMs));
  }

  QStatusBar& widget_;
  StatusBar& model_;
  std::vector<QLabel*> labels_;
  QTimer clock_;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, StatusBar& bar) {
  auto* target = qobject_cast<QStatusBar*>(&widget);
  return target != nullptr ? new StatusBarBinding(*target, bar) : nullptr;
}

} // namespace kelmio

// Text boxes of one line and of many.
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextCursor>

#include <algorithm>
#include <string>

#include "qt/bindings.h"
#include "qt/colors.h"
#include "qt/text_offsets.h"
#include "qt/units.h"

namespace kelmio {

namespace {

int ToInt(std::size_t value) {
  return static_cast<int>(value);
}

/// What both kinds share: the stored text behind the shown one, and the selection between them.
class TextBoxBinding : public ControlBinding {
public:
  TextBoxBinding(QWidget& widget, TextBox& model, bool folds_line_ends)
      : ControlBinding(model, widget), model_(model), widget_(widget) {
    form_.folds_line_ends = folds_line_ends;
  }

protected:
  virtual void SetAll(const QString& text) = 0;
  virtual void Append(const QString& text) = 0;
  virtual void Select(int start, int length) = 0;
  virtual void SetReadOnly(bool read_only) = 0;

  void Show() override {
    widget_.setEnabled(model_.Enabled);
    SetReadOnly(model_.Locked);
    SetBackColor(widget_, model_.BackColor);
    ShowText();
    const std::string& text = model_.Text.Get();
    const std::size_t end = std::min(model_.SelStart.Get() + model_.SelLength.Get(), text.size());
    const std::size_t start = ShownOffset(text, model_.SelStart, form_);
    Select(ToInt(start), ToInt(ShownOffset(text, end, form_) - start));
  }

  /// The user changed the text; the cursor stands behind what was typed.
  void TakeText(const QString& shown, int cursor) {
    QString text = shown;
    if (form_.folds_line_ends)
      text.replace('\n', "\r\n");
    const bool taken = Write([&] {
      stored_ = text.toStdString();
      form_.utf8 = true;
      model_.Text = stored_;
      model_.SelStart = StoredOffset(stored_, static_cast<std::size_t>(cursor), form_);
      model_.SelLength = 0;
    });
    if (taken)
      RunHandler([this] { model_.Change(); });
  }

  /// The user moved the cursor or the selection.
  void TakeSelection(int start, int length) {
    Write([&] {
      const auto first = static_cast<std::size_t>(start);
      const std::size_t from = StoredOffset(model_.Text.Get(), first, form_);
      const std::size_t to = StoredOffset(model_.Text.Get(), first + static_cast<std::size_t>(length), form_);
      model_.SelStart = from;
      model_.SelLength = to - from;
    });
  }

  TextBox& model_;

private:
  // A log grows by a line at a time up to some 100,000 characters: only its new end is handed on.
  void ShowText() {
    const std::string& text = model_.Text.Get();
    if (text == stored_)
      return;
    const std::string_view tail = Tail(text);
    if (!tail.empty() && form_.utf8 && IsValidUtf8(tail)) {
      Append(ToText(tail));
    } else {
      form_.utf8 = IsValidUtf8(text);
      SetAll(ToText(text));
    }
    stored_ = text;
  }

  /// What follows the text on the screen; nothing when the text isn't its continuation, or cuts into a line end.
  std::string_view Tail(const std::string& text) const {
    if (stored_.empty() || !text.starts_with(stored_))
      return {};
    const std::string_view tail = std::string_view(text).substr(stored_.size());
    return stored_.back() == '\r' && tail.front() == '\n' ? std::string_view() : tail;
  }

  QWidget& widget_;
  std::string stored_;
  TextForm form_;
};

class LineBinding : public TextBoxBinding {
public:
  LineBinding(QLineEdit& widget, TextBox& model) : TextBoxBinding(widget, model, false), widget_(widget) {
    connect(&widget, &QLineEdit::textChanged, this,
            [this](const QString& text) { TakeText(text, widget_.cursorPosition()); });
    connect(&widget, &QLineEdit::selectionChanged, this, [this] { TakeCursor(); });
    connect(&widget, &QLineEdit::cursorPositionChanged, this, [this] { TakeCursor(); });
    widget.installEventFilter(this);
  }

protected:
  void Show() override {
    const auto mode = model_.PasswordChar == '\0' ? QLineEdit::Normal : QLineEdit::Password;
    if (widget_.echoMode() != mode)
      widget_.setEchoMode(mode);
    TextBoxBinding::Show();
  }

  void SetAll(const QString& text) override { widget_.setText(text); }
  void Append(const QString& text) override { widget_.setText(widget_.text() + text); }
  void Select(int start, int length) override {
    if (length > 0)
      widget_.setSelection(start, length);
    else
      widget_.setCursorPosition(start);
  }
  void SetReadOnly(bool read_only) override { widget_.setReadOnly(read_only); }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched != &widget_ || event->type() != QEvent::KeyPress || !model_.EnterPressed)
      return TextBoxBinding::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Return && key != Qt::Key_Enter)
      return false;
    RunHandler([this] { model_.EnterPressed(); });
    return true;
  }

private:
  void TakeCursor() {
    if (widget_.hasSelectedText())
      TakeSelection(widget_.selectionStart(), widget_.selectionLength());
    else
      TakeSelection(widget_.cursorPosition(), 0);
  }

  QLineEdit& widget_;
};

class PageBinding : public TextBoxBinding {
public:
  PageBinding(QPlainTextEdit& widget, TextBox& model) : TextBoxBinding(widget, model, true), widget_(widget) {
    connect(&widget, &QPlainTextEdit::textChanged, this, [this] {
      if (!Showing())
        TakeText(widget_.toPlainText(), widget_.textCursor().position());
    });
    connect(&widget, &QPlainTextEdit::selectionChanged, this, [this] { TakeCursor(); });
    connect(&widget, &QPlainTextEdit::cursorPositionChanged, this, [this] { TakeCursor(); });
  }

protected:
  void Show() override {
    QScrollBar* bar = widget_.verticalScrollBar();
    const bool at_end = bar->value() >= bar->maximum();
    const int place = bar->value();
    TextBoxBinding::Show();
    // A reader who scrolled back stays where he reads; whoever stands at the end sees the new lines come.
    bar->setValue(at_end ? bar->maximum() : place);
  }

  void SetAll(const QString& text) override { widget_.setPlainText(text); }
  void Append(const QString& text) override {
    QTextCursor cursor(widget_.document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(text);
  }
  void Select(int start, int length) override {
    QTextCursor cursor(widget_.document());
    if (const QTextCursor now = widget_.textCursor();
        now.selectionStart() == start && now.selectionEnd() == start + length)
      return;
    cursor.setPosition(start);
    cursor.setPosition(start + length, QTextCursor::KeepAnchor);
    widget_.setTextCursor(cursor);
  }
  void SetReadOnly(bool read_only) override {
    if (widget_.isReadOnly() == read_only)
      return;
    widget_.setReadOnly(read_only);
    widget_.setUndoRedoEnabled(!read_only); // a log keeps no history of its lines
  }

private:
  void TakeCursor() {
    const QTextCursor cursor = widget_.textCursor();
    TakeSelection(cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart());
  }

  QPlainTextEdit& widget_;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, TextBox& box) {
  if (auto* line = qobject_cast<QLineEdit*>(&widget))
    return new LineBinding(*line, box);
  if (auto* page = qobject_cast<QPlainTextEdit*>(&widget))
    return new PageBinding(*page, box);
  return nullptr;
}

} // namespace kelmio

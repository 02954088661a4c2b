#include "telephony/frmOutput.h"

#include "core/text.h"

namespace kelmio {

namespace {

/// A log that has grown beyond this many characters is emptied before the next line.
constexpr std::size_t kMostLogCharacters = 100000;

} // namespace

frmOutput::frmOutput(const AppState& app, const Settings& settings, Clipboard& clipboard, Journal& journal)
    : app_(app), settings_(settings), clipboard_(clipboard), journal_(journal) {
  Caption = "Status";
  cmdCopy.Caption = "Copy";
  cmdClear.Caption = "Clear";
  cmdSelectAll.Caption = "Select All";
  cmdCopy.Click = [this] { cmdCopy_Click(); };
  cmdClear.Click = [this] { cmdClear_Click(); };
  cmdSelectAll.Click = [this] { cmdSelectAll_Click(); };
}

void frmOutput::Load() {
  BackColor = settings_.StatusWindowColor;
  txtOutput.BackColor = settings_.StatusWindowColor;
  txtOutput.Locked = true;
}

void frmOutput::OnLogText(const std::string& text) {
  if (!app_.AppLoaded)
    return;
  // Callers name themselves: what they send must not pass for a line of the log's own.
  std::string line = DisplayText(text);
  for (char& c : line)
    if (static_cast<unsigned char>(c) < ' ')
      c = ' ';
  if (txtOutput.Text.Get().size() > kMostLogCharacters)
    txtOutput.Text = "";
  txtOutput.SelStart = txtOutput.Text.Get().size();
  txtOutput.SelLength = 0;
  txtOutput.ReplaceSelection(line + "\r\n");
  journal_.Write(line);
}

void frmOutput::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("txtOutput", txtOutput);
  visitor.Visit("cmdCopy", cmdCopy);
  visitor.Visit("cmdClear", cmdClear);
  visitor.Visit("cmdSelectAll", cmdSelectAll);
}

void frmOutput::cmdCopy_Click() {
  clipboard_.Clear();
  clipboard_.SetText(txtOutput.Text);
}

void frmOutput::cmdClear_Click() {
  cmdSelectAll_Click();
  txtOutput.ReplaceSelection("");
}

void frmOutput::cmdSelectAll_Click() {
  txtOutput.SelStart = 0;
  txtOutput.SelLength = txtOutput.Text.Get().size();
}

} // namespace kelmio

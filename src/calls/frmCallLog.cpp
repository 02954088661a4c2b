#include "calls/frmCallLog.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace kelmio {

namespace {

constexpr std::size_t kEntriesBetweenPumps = 20;

// Columns as cells of a row, the running number being the first.
constexpr std::size_t kNumberCell = 0;
constexpr std::size_t kNameCell = 1;
constexpr std::size_t kPhoneCell = 2;
constexpr std::size_t kFieldsShown = 4;

} // namespace

frmCallLog::frmCallLog(const House& house) : house_(house) {
  Caption = "Call Log";
  using Alignment = ListColumn::Alignment;
  lvwCallLog.AddColumn({"#", 600, Alignment::Left});
  lvwCallLog.AddColumn({"Caller Name", 3000, Alignment::Left});
  lvwCallLog.AddColumn({"Phone Number", 2500, Alignment::Left});
  lvwCallLog.AddColumn({"Date", 1500, Alignment::Center});
  lvwCallLog.AddColumn({"Time", 1500, Alignment::Center});
  cmdAddToContact.Caption = "Add to Contact";
  cmdDial.Caption = "Dial";
  cmdSelectAll.Caption = "Select All";
  cmdDelete.Caption = "Delete";
  cmdClose.Caption = "Close";
  cmdAddToContact.Click = [this] { cmdAddToContact_Click(); };
  cmdDial.Click = [this] { cmdDial_Click(); };
  cmdSelectAll.Click = [this] { cmdSelectAll_Click(); };
  cmdDelete.Click = [this] { DeleteCallLog(); };
  cmdClose.Click = [this] { Visible = false; };
  lvwCallLog.DeleteKey = [this] { DeleteCallLog(); };
  lvwCallLog.DblClick = [this] {
    if (lvwCallLog.RowCount() != 0)
      cmdDial_Click();
  };
}

void frmCallLog::Load() {
  LoadCallLog();
}

void frmCallLog::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("lvwCallLog", lvwCallLog);
  visitor.Visit("cmdAddToContact", cmdAddToContact);
  visitor.Visit("cmdDial", cmdDial);
  visitor.Visit("cmdSelectAll", cmdSelectAll);
  visitor.Visit("cmdDelete", cmdDelete);
  visitor.Visit("cmdClose", cmdClose);
}

void frmCallLog::LoadCallLog() {
  lvwCallLog.Clear();
  // Read before any event runs: an entry that comes meanwhile belongs to the next opening.
  std::size_t number = 0;
  for (CallLogEntry& entry : house_.call_log.Entries()) {
    ++number;
    ListRow& row = lvwCallLog.AddRow({std::to_string(number)});
    row.tag = std::move(entry.key);
    std::move(entry.fields.begin(), entry.fields.begin() + kFieldsShown, std::back_inserter(row.cells));
    if (number % kEntriesBetweenPumps == 0)
      house_.loop.RunPending();
  }
}

void frmCallLog::DeleteCallLog() {
  if (lvwCallLog.RowCount() == 0)
    return;
  std::vector<std::string> keys;
  for (const ListRow& row : lvwCallLog.Rows())
    if (row.selected)
      keys.push_back(row.tag);
  if (keys.empty())
    return;
  house_.call_log.DeleteEntries(keys);
  lvwCallLog.RemoveRows([](const ListRow& row) { return row.selected; });
  for (std::size_t row = 1; row <= lvwCallLog.RowCount(); ++row)
    lvwCallLog.Row(row).cells[kNumberCell] = std::to_string(row);
  lvwCallLog.Changed();
}

void frmCallLog::cmdAddToContact_Click() {
  const std::size_t current = lvwCallLog.SelectedRow();
  if (current == 0)
    return;
  const ListRow& row = std::as_const(lvwCallLog).Row(current);
  house_.app.ContactOpenedExternally = true;
  house_.app.CurrentContactID.clear();
  house_.app.NewContactName = row.cells[kNameCell];
  house_.app.NewContactPhone = row.cells[kPhoneCell];
  house_.windows.OpenContactEditor(*this);
}

void frmCallLog::cmdDial_Click() {
  const auto& rows = lvwCallLog.Rows();
  const auto selected = std::find_if(rows.begin(), rows.end(), [](const ListRow& row) { return row.selected; });
  // With nothing selected the number of the last time stays.
  if (selected != rows.end())
    house_.app.DialNumber = selected->cells[kPhoneCell];
  house_.windows.OpenDialer(*this);
}

void frmCallLog::cmdSelectAll_Click() {
  if (lvwCallLog.RowCount() == 0)
    return;
  std::vector<std::uint64_t> keys;
  keys.reserve(lvwCallLog.RowCount());
  for (const ListRow& row : lvwCallLog.Rows())
    keys.push_back(row.key);
  // The entry that "Add to Contact" takes stays the one that the user was on.
  const std::size_t current = lvwCallLog.SelectedRow();
  lvwCallLog.SetSelection(keys, current != 0 ? keys[current - 1] : keys.front());
  lvwCallLog.SetFocus();
}

} // namespace kelmio

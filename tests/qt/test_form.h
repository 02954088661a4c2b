// A form with one control of each kind, and its window.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTreeView>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <memory>

#include "controls/command_bars.h"
#include "controls/docking_panes.h"
#include "controls/form.h"
#include "controls/list_view.h"
#include "controls/picture_box.h"
#include "controls/spectrum_view.h"
#include "controls/tree_view.h"
#include "controls/ucSlider.h"
#include "qt/link_label.h"
#include "qt/slider_widget.h"
#include "qt/wave_view.h"

namespace kelmio {

struct TestForm : Form {
  Label lblTitle;
  Button cmdGo;
  TextBox txtLine;
  TextBox txtPage;
  ListView lvwRows;
  StatusBar sbStatus;
  CommandBars Bars;
  DockingPanes Panes;
  Label lblLink;
  TreeView twvNodes;
  PictureBox picPhoto;
  SpectrumView Wave;
  ucSlider sldPlace;
  bool stays = false;
  int unloads = 0;

  void VisitControls(ControlVisitor& visitor) override {
    visitor.Visit("lblTitle", lblTitle);
    visitor.Visit("cmdGo", cmdGo);
    visitor.Visit("txtLine", txtLine);
    visitor.Visit("txtPage", txtPage);
    visitor.Visit("lvwRows", lvwRows);
    visitor.Visit("sbStatus", sbStatus);
    visitor.Visit("Bars", Bars);
    visitor.Visit("Panes", Panes);
    visitor.Visit("lblLink", lblLink);
    visitor.Visit("twvNodes", twvNodes);
    visitor.Visit("picPhoto", picPhoto);
    visitor.Visit("Wave", Wave);
    visitor.Visit("sldPlace", sldPlace);
  }
  bool QueryUnload() override { return stays; }
  void Unload() override { ++unloads; }
};

/// The widgets that a layout of that form would make.
class TestWindow : public QMainWindow {
public:
  TestWindow() {
    auto* center = Named<QWidget>("Panes");
    auto* columns = new QHBoxLayout(center);
    auto* rows = new QVBoxLayout;
    auto* second = new QVBoxLayout;
    columns->addLayout(rows, 2);
    columns->addLayout(second, 1);
    for (QWidget* widget : {static_cast<QWidget*>(link), static_cast<QWidget*>(tree), static_cast<QWidget*>(photo),
                            static_cast<QWidget*>(wave), static_cast<QWidget*>(slider)})
      second->addWidget(widget);
    for (QWidget* widget : {static_cast<QWidget*>(title), static_cast<QWidget*>(go), static_cast<QWidget*>(line),
                            static_cast<QWidget*>(page), static_cast<QWidget*>(list)})
      rows->addWidget(widget);
    setCentralWidget(center);
    setMenuBar(menu_bar);
    setStatusBar(status);
  }

private:
  template <class Widget> static Widget* Named(const char* name) {
    auto* widget = new Widget();
    widget->setObjectName(name);
    return widget;
  }

public:
  QLabel* title = Named<QLabel>("lblTitle");
  QPushButton* go = Named<QPushButton>("cmdGo");
  QLineEdit* line = Named<QLineEdit>("txtLine");
  QPlainTextEdit* page = Named<QPlainTextEdit>("txtPage");
  QTreeView* list = Named<QTreeView>("lvwRows");
  LinkLabel* link = Named<LinkLabel>("lblLink");
  QTreeWidget* tree = Named<QTreeWidget>("twvNodes");
  QLabel* photo = Named<QLabel>("picPhoto");
  WaveView* wave = Named<WaveView>("Wave");
  SliderWidget* slider = Named<SliderWidget>("sldPlace");
  QMenuBar* menu_bar = Named<QMenuBar>("Bars");
  QStatusBar* status = Named<QStatusBar>("sbStatus");
};

/// Runs the event loop until nothing more is due; bindings refresh there.
inline void Settle() {
  for (int round = 0; round < 5; ++round)
    QCoreApplication::processEvents();
}

/// Runs the event loop until the condition holds. False after a time that no working program needs.
template <class Condition> bool WaitFor(Condition condition) {
  constexpr int kPatienceMs = 10000;
  QElapsedTimer since;
  since.start();
  while (!condition()) {
    if (since.elapsed() > kPatienceMs)
      return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 50);
  }
  return true;
}

inline CommandItem Item(int id, const char* caption, std::vector<CommandItem> items = {}) {
  CommandItem item;
  item.id = id;
  item.caption = caption;
  item.items = std::move(items);
  return item;
}

} // namespace kelmio

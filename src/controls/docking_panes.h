// The panes that dock to a window's edges.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "controls/control.h"

namespace kelmio {

class Form;

/// One pane. Width and height are pixels at the first start; afterwards the user's layout holds.
struct DockingPane {
  enum class Edge { Left, Right, Bottom };
  int id = 0;
  std::string title;
  int width = 0;
  int height = 0;
  Edge edge = Edge::Bottom;
  int neighbour = 0; // a pane's id, or 0
  bool closed = false;
  bool hidden = false;
  Form* form = nullptr; // what the pane holds; not owned
};

/// The pane manager of one window. User interface thread only.
class DockingPanes : public Control {
public:
  DockingPane& CreatePane(int id, int width, int height, DockingPane::Edge edge, int neighbour);
  /// Nothing when there is no such pane. Call `Changed` after changing it.
  DockingPane* Find(int id);
  const std::vector<DockingPane>& Panes() const { return panes_; }

  /// Layout of the panes, private to the view; the form stores it and gives it back.
  std::function<std::string()> SaveState = [] { return std::string(); };
  std::function<void(const std::string&)> RestoreState = [](const std::string&) {};

private:
  std::vector<DockingPane> panes_;
};

} // namespace kelmio

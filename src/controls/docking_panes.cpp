#include "controls/docking_panes.h"

namespace kelmio {

DockingPane& DockingPanes::CreatePane(int id, int width, int height, DockingPane::Edge edge, int neighbour) {
  DockingPane pane;
  pane.id = id;
  pane.width = width;
  pane.height = height;
  pane.edge = edge;
  pane.neighbour = neighbour;
  panes_.push_back(std::move(pane));
  Changed();
  return panes_.back();
}

DockingPane* DockingPanes::Find(int id) {
  for (DockingPane& pane : panes_)
    if (pane.id == id)
      return &pane;
  return nullptr;
}

} // namespace kelmio

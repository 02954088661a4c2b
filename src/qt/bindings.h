// One binding a kind of control. Each is a child of the widget it serves (see ControlBinding).
#pragma once

#include <QWidget>

#include "controls/basic_controls.h"
#include "qt/control_binding.h"

namespace kelmio {

class CommandBars;
class DockingPanes;
class ListView;
class PictureBox;
class SpectrumView;
class TabControl;
class TreeView;
class WebBrowser;
class jcForms;
class ucSlider;

/// Each returns nothing when the widget is of a kind that can't show the control.
ControlBinding* BindControl(QWidget& widget, Label& label);
ControlBinding* BindControl(QWidget& widget, Button& button);
ControlBinding* BindControl(QWidget& widget, CheckBox& box);
ControlBinding* BindControl(QWidget& widget, ComboBox& box);
ControlBinding* BindControl(QWidget& widget, ProgressBar& bar);
ControlBinding* BindControl(QWidget& widget, TextBox& box);
ControlBinding* BindControl(QWidget& widget, ListView& list);
ControlBinding* BindControl(QWidget& widget, StatusBar& bar);
ControlBinding* BindControl(QWidget& widget, CommandBars& bars);
ControlBinding* BindControl(QWidget& widget, DockingPanes& panes);
ControlBinding* BindControl(QWidget& widget, TabControl& tabs);
ControlBinding* BindControl(QWidget& widget, TreeView& tree);
ControlBinding* BindControl(QWidget& widget, PictureBox& box);
ControlBinding* BindControl(QWidget& widget, SpectrumView& view);
ControlBinding* BindControl(QWidget& widget, ucSlider& slider);
ControlBinding* BindControl(QWidget& widget, jcForms& frame);
ControlBinding* BindControl(QWidget& widget, WebBrowser& browser);

} // namespace kelmio

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/grid.h>
#include <gtkmm/label.h>
#include <gtkmm/widget.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

// Real widgets on a private display: how tests find them, look at them and emit their signals.

std::vector<Gtk::Widget*> children(Gtk::Widget& widget);

/** Runs the main loop until the condition holds; false when it does not after ten seconds. */
bool eventually(const std::function<bool()>& condition);

/**
 * A widget and all below it, one line each: kind, text, and what was set on it. For what stands in
 * a grid the line begins with column, row, width and height. No more than so many levels below it.
 */
std::string describe(Gtk::Widget& widget, int levels = 10);

/** The first widget of a class, from the top, that the condition holds for. */
template <typename W>
W* findWidget(
    Gtk::Widget& root, const std::function<bool(W&)>& condition = [](W&) { return true; }) {
  auto* self = dynamic_cast<W*>(&root);
  if (self != nullptr && condition(*self)) return self;
  for (Gtk::Widget* child : children(root)) {
    if (W* found = findWidget<W>(*child, condition)) return found;
  }
  return nullptr;
}

/** The only way to a widget that has no accessor. Throws when it is not there. */
template <typename W>
W& widgetOf(Gtk::Widget& root) {
  if (W* found = findWidget<W>(root)) return *found;
  throw std::runtime_error("no such widget");
}

/** The button, check button or label with the given label. */
template <typename W>
W& labelled(Gtk::Widget& root, const Glib::ustring& label) {
  W* found = findWidget<W>(root, [&](W& widget) { return widget.get_label() == label; });
  if (found == nullptr) throw std::runtime_error("nothing labelled " + label.raw());
  return *found;
}

/** The field that a label of a grid stands beside. */
template <typename W>
W& fieldOf(Gtk::Widget& root, const Glib::ustring& label) {
  auto& labelWidget = labelled<Gtk::Label>(root, label);
  auto& grid = dynamic_cast<Gtk::Grid&>(*labelWidget.get_parent());
  int column = 0;
  int row = 0;
  int width = 0;
  int height = 0;
  grid.query_child(labelWidget, column, row, width, height);
  return dynamic_cast<W&>(*grid.get_child_at(column + width, row));
}

/** Emits the signal of a click, which has done all its work on return. */
void click(Gtk::Widget& button);

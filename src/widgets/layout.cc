// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/layout.h"

#include "widgets/widget_text.h"

void showAll(std::initializer_list<Gtk::Widget*> widgets) {
  for (Gtk::Widget* widget : widgets) widget->set_visible(true);
}

void layOutDeviceBox(Gtk::Box& box, Gtk::Grid& grid, Gtk::Label& label, Gtk::Entry& entry,
                     const std::string& interfaceName) {
  box.set_visible(true);
  box.append(grid);
  grid.set_visible(true);
  grid.set_expand(true);
  grid.set_halign(Gtk::Align::FILL);
  grid.set_valign(Gtk::Align::CENTER);
  grid.set_column_homogeneous(true);
  grid.set_row_homogeneous(true);
  grid.set_margin(MARGIN);

  entry.set_text(toWidgetText(interfaceName));
  entry.set_editable(false);
  entry.set_expand(true);

  grid.attach(label, 0, 0);
  grid.attach(entry, 0, 1);
  label.set_mnemonic_widget(entry);
  for (Gtk::Widget* widget : std::initializer_list<Gtk::Widget*>{&label, &entry}) {
    widget->set_halign(Gtk::Align::CENTER);
    widget->set_valign(Gtk::Align::CENTER);
    widget->set_margin(MARGIN);
    widget->set_visible(true);
  }
}

void layOutFramedGrid(Gtk::Box& box, Gtk::Label& title, Gtk::Frame& frame, Gtk::Grid& grid) {
  constexpr float CENTERED = 0.5F;
  title.set_margin_top(MARGIN);
  title.set_margin_bottom(MARGIN);
  title.set_xalign(CENTERED);
  box.append(title);

  frame.property_accessible_role() = Gtk::Accessible::Role::GROUP;  // one without a name
  frame.set_margin(MARGIN);
  box.append(frame);

  grid.set_column_homogeneous(true);
  grid.set_row_homogeneous(true);
  grid.set_margin(MARGIN);
  frame.set_child(grid);
  title.set_mnemonic_widget(grid);
  showAll({&title, &frame, &grid});
}

void attachField(Gtk::Grid& grid, Gtk::Label& label, Gtk::Widget& field, int row) {
  grid.attach(label, 0, row);
  grid.attach(field, 1, row);
  label.set_mnemonic_widget(field);
  showAll({&label, &field});
}

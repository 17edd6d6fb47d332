// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/layout.h"

#include "widgets/widget_text.h"

namespace {

void attachRadioButton(Gtk::Grid& grid, Gtk::CheckButton& button, int column) {
  button.property_accessible_role() = Gtk::Accessible::Role::RADIO;
  button.set_halign(Gtk::Align::CENTER);
  button.set_valign(Gtk::Align::CENTER);
  button.set_visible(true);
  grid.attach(button, column, 0);
}

}  // namespace

void showAll(std::initializer_list<Gtk::Widget*> widgets) {
  for (Gtk::Widget* widget : widgets) widget->set_visible(true);
}

void layOutDeviceBox(Gtk::Box& box, Gtk::Grid& grid, Gtk::Label& label, Gtk::Entry& entry,
                     const std::string& interfaceName) {
  // box > grid
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

  // box > grid > label, and the entry below it
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

void layOutChoice(Gtk::Box& box, Gtk::Label& title, Gtk::Frame& frame, Gtk::Grid& grid,
                  std::initializer_list<Gtk::CheckButton*> buttons) {
  constexpr float CENTERED = 0.5F;
  // box > title
  title.set_margin_top(MARGIN);
  title.set_margin_bottom(MARGIN);
  title.set_xalign(CENTERED);
  box.append(title);

  // box > frame
  frame.property_accessible_role() = Gtk::Accessible::Role::GROUP;  // a role that may have a name
  frame.set_margin(MARGIN);
  title.set_mnemonic_widget(frame);
  box.append(frame);

  // box > frame > grid
  grid.set_column_homogeneous(true);
  grid.set_row_homogeneous(true);
  grid.set_margin(MARGIN);
  frame.set_child(grid);
  showAll({&title, &frame, &grid});

  // box > frame > grid > buttons
  int column = 0;
  for (Gtk::CheckButton* button : buttons) {
    if (button != nullptr) attachRadioButton(grid, *button, column);
    ++column;
  }
}

void attachField(Gtk::Grid& grid, Gtk::Label& label, Gtk::Widget& field, int column, int row) {
  grid.attach(label, column, row);
  grid.attach(field, column + 1, row);
  label.set_mnemonic_widget(field);
  // A check trims the end of a line away, which would end the value in the keyfile.
  if (auto* entry = dynamic_cast<Gtk::Entry*>(&field)) entry->property_truncate_multiline() = true;
  showAll({&label, &field});
}

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/box.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/entry.h>
#include <gtkmm/frame.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>

/** The address pool of the access point: for display only, insensitive, hidden in every mode. */
class DHCPBox : public Gtk::Box {
 public:
  DHCPBox();

 private:
  Gtk::Label enableLabel;
  Gtk::Frame frame;
  Gtk::Grid enableGrid;
  Gtk::CheckButton yesButton;
  Gtk::CheckButton noButton;
  Gtk::Label poolLabel;
  Gtk::Label startLabel;
  Gtk::Label endLabel;
  Gtk::Grid poolGrid;
  Gtk::Entry startEntry;
  Gtk::Entry endEntry;
};

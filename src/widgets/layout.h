// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/box.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/entry.h>
#include <gtkmm/frame.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>

#include <initializer_list>
#include <string>

/** The margin, in pixels, around labels, frames, grids and pages. */
constexpr int MARGIN = 5;

/** Makes widgets visible. */
void showAll(std::initializer_list<Gtk::Widget*> widgets);

/** Puts a grid into a vertical box, a label above an entry that only shows an interface's name. */
void layOutDeviceBox(Gtk::Box& box, Gtk::Grid& grid, Gtk::Label& label, Gtk::Entry& entry,
                     const std::string& interfaceName);

/**
 * Puts a title and, below it, a frame around a row of radio buttons into a vertical box. The
 * columns are equally wide; nullptr leaves one empty. The title names the choice.
 */
void layOutChoice(Gtk::Box& box, Gtk::Label& title, Gtk::Frame& frame, Gtk::Grid& grid,
                  std::initializer_list<Gtk::CheckButton*> buttons);

/**
 * Puts a label into a cell and its field into the next one, and names the field by the label. Of
 * what is pasted into an entry the first line is taken.
 */
void attachField(Gtk::Grid& grid, Gtk::Label& label, Gtk::Widget& field, int column, int row);

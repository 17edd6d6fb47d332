// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/box.h>
#include <gtkmm/entry.h>
#include <gtkmm/frame.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>

#include <initializer_list>
#include <string>

/** The margin, in pixels, around what stands on its own. */
constexpr int MARGIN = 5;

/** Makes widgets visible. */
void showAll(std::initializer_list<Gtk::Widget*> widgets);

/** Puts a grid into a vertical box, a label above an entry that only shows an interface's name. */
void layOutDeviceBox(Gtk::Box& box, Gtk::Grid& grid, Gtk::Label& label, Gtk::Entry& entry,
                     const std::string& interfaceName);

/**
 * Puts a title and, below it, a frame around a grid of equal cells into a vertical box; the title
 * names the grid.
 */
void layOutFramedGrid(Gtk::Box& box, Gtk::Label& title, Gtk::Frame& frame, Gtk::Grid& grid);

/** Puts a label into column 0 and its field beside it; the label names the field. */
void attachField(Gtk::Grid& grid, Gtk::Label& label, Gtk::Widget& field, int row);

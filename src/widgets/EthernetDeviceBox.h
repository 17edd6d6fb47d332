// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/box.h>
#include <gtkmm/entry.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>

#include "app/NetworkManagerConfig.h"

/** Shows the wired interface's name as the keyfile has it, "eth0" where it has none. */
class EthernetDeviceBox : public Gtk::Box {
 public:
  explicit EthernetDeviceBox(NetworkManagerConfig& theConfig);

 private:
  NetworkManagerConfig& config;
  Gtk::Grid grid;
  Gtk::Label deviceLabel;
  Gtk::Entry deviceEntry;
};

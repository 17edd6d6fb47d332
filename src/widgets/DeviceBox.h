// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/box.h>
#include <gtkmm/entry.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>

#include "app/NetworkManagerConfig.h"

/** Shows the wireless interface's name as the keyfile has it, "wlan0" where it has none. */
class DeviceBox : public Gtk::Box {
 public:
  explicit DeviceBox(NetworkManagerConfig& theConfig);

  Gtk::Entry& getDeviceEntry() { return deviceEntry; }

 private:
  NetworkManagerConfig& config;
  Gtk::Grid grid;
  Gtk::Label deviceLabel;
  Gtk::Entry deviceEntry;
};

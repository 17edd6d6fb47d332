// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/grid.h>

#include "app/NetworkManagerConfig.h"
#include "widgets/EthernetCredentialsBox.h"
#include "widgets/EthernetDeviceBox.h"
#include "widgets/EthernetIPModeBox.h"

/** The "Ethernet" page. */
class EthernetGrid : public Gtk::Grid {
 public:
  explicit EthernetGrid(NetworkManagerConfig& theConfig);

  EthernetCredentialsBox& getCredentialsBox() { return credentialsBox; }
  EthernetIPModeBox& getIPModeBox() { return ipModeBox; }
  EthernetDeviceBox& getDeviceBox() { return deviceBox; }

 private:
  EthernetCredentialsBox credentialsBox;
  EthernetIPModeBox ipModeBox;
  EthernetDeviceBox deviceBox;
};

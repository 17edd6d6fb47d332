// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/dropdown.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>

#include "app/NetworkManagerConfig.h"
#include "widgets/APCredentials.h"
#include "widgets/DHCPBox.h"
#include "widgets/DeviceBox.h"
#include "widgets/WifiCredentials.h"
#include "widgets/WifiModeBox.h"

/** The "Wifi" page. */
class WifiGrid : public Gtk::Grid {
 public:
  explicit WifiGrid(NetworkManagerConfig& theConfig);

  DeviceBox& getDeviceBox() { return deviceBox; }
  WifiModeBox& getModeBox() { return modeBox; }
  WifiCredentials& getCredentials() { return credentials; }
  APCredentials& getAPCredentials() { return apCredentials; }

 private:
  Gtk::DropDown dropDown;  // reserved, never placed
  DeviceBox deviceBox;
  WifiModeBox modeBox;
  WifiCredentials credentials;
  Gtk::Label noteLabel;
  APCredentials apCredentials;
  DHCPBox dhcpBox;
};

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/EthernetDeviceBox.h"

#include "settings/ethernet.h"
#include "widgets/layout.h"

EthernetDeviceBox::EthernetDeviceBox(NetworkManagerConfig& theConfig)
    : Gtk::Box(Gtk::Orientation::VERTICAL), config(theConfig), deviceLabel("Device") {
  layOutDeviceBox(
      *this, grid, deviceLabel, deviceEntry,
      config.readIniString("connection", "interface-name", std::string(ETHERNET_INTERFACE),
                           config.getEthernetConnectionPath()));
}

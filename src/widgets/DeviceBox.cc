// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/DeviceBox.h"

#include "settings/wifi.h"
#include "widgets/layout.h"

DeviceBox::DeviceBox(NetworkManagerConfig& theConfig)
    : Gtk::Box(Gtk::Orientation::VERTICAL), config(theConfig), deviceLabel("Device") {
  layOutDeviceBox(*this, grid, deviceLabel, deviceEntry,
                  config.readIniString("connection", "interface-name", std::string(WIFI_INTERFACE),
                                       config.getWifiConnectionPath()));
}

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/DeviceBox.h"

#include "settings/wifi.h"
#include "widgets/layout.h"

DeviceBox::DeviceBox(NetworkManagerConfig& paths)
    : Gtk::Box(Gtk::Orientation::VERTICAL), config(paths), deviceLabel("Device") {
  layOutDeviceBox(*this, grid, deviceLabel, deviceEntry,
                  config.readIniString("connection", "interface-name", std::string(WIFI_INTERFACE),
                                       config.getWifiConnectionPath()));
}

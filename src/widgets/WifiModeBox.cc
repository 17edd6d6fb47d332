// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/WifiModeBox.h"

#include "base/print.h"
#include "settings/wifi.h"
#include "widgets/layout.h"

WifiModeBox::WifiModeBox(NetworkManagerConfig& theConfig)
    : Gtk::Box(Gtk::Orientation::VERTICAL),
      config(theConfig),
      wifiPath(config.getWifiConnectionPath()),
      modeLabel("Mode"),
      clientButton("Client"),
      accessPointButton("Access Point"),
      disabledButton("Disabled") {
  logLine("Wifi Path: ", wifiPath);
  // "Disabled" comes first on the screen, though not among the members.
  layOutChoice(*this, modeLabel, frame, grid, {&disabledButton, &clientButton, &accessPointButton});
  accessPointButton.set_group(clientButton);
  disabledButton.set_group(clientButton);
  loadModeFromFile();
}

std::string WifiModeBox::getSelectedMode() const {
  if (accessPointButton.get_active()) return std::string(WIFI_AP_MODE);
  if (clientButton.get_active()) return std::string(WIFI_CLIENT_MODE);
  return std::string(WIFI_DISABLED_MODE);
}

void WifiModeBox::loadModeFromFile() {
  const std::string mode = config.readIniString("wifi", "mode", "", wifiPath);
  if (mode == WIFI_AP_MODE) {
    accessPointButton.set_active(true);
  } else if (mode == WIFI_CLIENT_MODE) {
    clientButton.set_active(true);
  } else {
    disabledButton.set_active(true);
  }
}

void WifiModeBox::connectModeButtons(APCredentials& apCredentials, DHCPBox& dhcpBox,
                                     Gtk::Label& noteLabel) {
  for (Gtk::CheckButton* button : {&clientButton, &accessPointButton, &disabledButton})
    button->signal_toggled().connect(sigc::bind(sigc::mem_fun(*this, &WifiModeBox::onModeToggled),
                                                std::ref(apCredentials), std::ref(dhcpBox),
                                                std::ref(noteLabel)));
}

void WifiModeBox::onModeToggled(APCredentials& apCredentials, DHCPBox& dhcpBox,
                                Gtk::Label& noteLabel) {
  if (accessPointButton.get_active()) {
    apCredentials.set_visible(true);
    dhcpBox.set_visible(false);  // intended: the box is not shown in any mode
    noteLabel.set_visible(true);
  } else if (clientButton.get_active() || disabledButton.get_active()) {
    apCredentials.set_visible(false);
    dhcpBox.set_visible(false);
    noteLabel.set_visible(false);
  }
}

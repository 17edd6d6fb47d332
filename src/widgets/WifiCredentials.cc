// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/WifiCredentials.h"

#include "widgets/accessible.h"
#include "widgets/layout.h"
#include "widgets/widget_text.h"

WifiCredentials::WifiCredentials(NetworkManagerConfig& theConfig)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL),
      config(theConfig),
      ssidLabel("SSID"),
      passwordLabel("Password"),
      showPasswordButton("Show Password"),
      wifiPath(config.getWifiConnectionPath()) {
  // box > grid
  set_visible(true);
  append(grid);
  ssidLabel.set_margin(MARGIN);
  passwordLabel.set_margin(MARGIN);

  loadFromFile();
  passwordEntry.set_visibility(false);
  passwordEntry.set_invisible_char('*');
  passwordEntry.set_input_purpose(Gtk::InputPurpose::PASSWORD);

  // box > grid > one row
  attachField(grid, ssidLabel, ssidEntry, 0, 0);
  attachField(grid, passwordLabel, passwordEntry, 2, 0);
  grid.attach(showPasswordButton, 4, 0);
  showPasswordButton.set_visible(true);

  ignoreArrowKeys(showPasswordButton);
  showPasswordButton.signal_toggled().connect(
      sigc::mem_fun(*this, &WifiCredentials::onShowPasswordToggled));
}

Glib::ustring WifiCredentials::getSsid() const { return ssidEntry.get_text(); }

Glib::ustring WifiCredentials::getPassword() const { return passwordEntry.get_text(); }

void WifiCredentials::loadFromFile() {
  reloadSsid("");
  reloadPassword("");
}

void WifiCredentials::reloadSsid(const std::string& defaultSsid) {
  ssidEntry.set_text(toWidgetText(config.readIniString("wifi", "ssid", defaultSsid, wifiPath)));
}

void WifiCredentials::reloadPassword(const std::string& defaultPassword) {
  passwordEntry.set_text(
      toWidgetText(config.readIniString("wifi-security", "psk", defaultPassword, wifiPath)));
}

void WifiCredentials::onShowPasswordToggled() {
  passwordEntry.set_visibility(showPasswordButton.get_active());
}

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
  set_visible(true);
  append(grid);
  ssidLabel.set_margin(MARGIN);
  passwordLabel.set_margin(MARGIN);

  loadFromFile();
  passwordEntry.set_visibility(false);
  passwordEntry.set_invisible_char('*');
  passwordEntry.set_input_purpose(Gtk::InputPurpose::PASSWORD);

  grid.attach(ssidLabel, 0, 0);
  grid.attach(ssidEntry, 1, 0);
  grid.attach(passwordLabel, 2, 0);
  grid.attach(passwordEntry, 3, 0);
  grid.attach(showPasswordButton, 4, 0);
  ssidLabel.set_mnemonic_widget(ssidEntry);
  passwordLabel.set_mnemonic_widget(passwordEntry);
  showAll({&ssidLabel, &ssidEntry, &passwordLabel, &passwordEntry, &showPasswordButton});

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

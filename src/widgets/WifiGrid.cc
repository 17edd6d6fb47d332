// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/WifiGrid.h"

#include "widgets/layout.h"

WifiGrid::WifiGrid(NetworkManagerConfig& theConfig)
    : deviceBox(theConfig),
      modeBox(theConfig),
      credentials(theConfig),
      noteLabel("Below info is only for access points"),
      apCredentials(theConfig) {
  set_valign(Gtk::Align::START);
  modeBox.connectModeButtons(apCredentials, dhcpBox, noteLabel);
  modeBox.onModeToggled(apCredentials, dhcpBox, noteLabel);  // the keyfile's mode is chosen already

  set_margin(MARGIN);
  set_expand(true);
  deviceBox.set_expand(true);
  modeBox.set_expand(true);
  dhcpBox.set_expand(true);

  // grid > boxes; column 0 stays empty by design
  attach(deviceBox, 1, 0, 3);
  attach(modeBox, 1, 1, 3);
  attach(credentials, 1, 2, 3);
  attach(noteLabel, 1, 3, 2);
  attach(apCredentials, 1, 4, 3, 2);
  attach(dhcpBox, 1, 6, 3);
  set_visible(true);
}

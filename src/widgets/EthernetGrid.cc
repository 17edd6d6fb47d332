// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/EthernetGrid.h"

#include "widgets/layout.h"

EthernetGrid::EthernetGrid(NetworkManagerConfig& theConfig)
    : credentialsBox(theConfig), ipModeBox(theConfig), deviceBox(theConfig) {
  set_valign(Gtk::Align::START);
  ipModeBox.connectModeButtons(credentialsBox);
  ipModeBox.onModeToggled(credentialsBox);  // nothing is chosen yet: it only prints its line

  set_margin(MARGIN);
  set_expand(true);
  credentialsBox.set_expand(true);
  credentialsBox.set_halign(Gtk::Align::CENTER);
  ipModeBox.set_expand(true);

  // grid > boxes; column 0 stays empty by design
  attach(deviceBox, 1, 0);
  attach(ipModeBox, 1, 1, 3);
  attach(credentialsBox, 1, 2, 3);
  set_visible(true);
}

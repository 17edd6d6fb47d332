// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/EthernetIPModeBox.h"

#include "base/print.h"
#include "settings/ethernet.h"
#include "widgets/layout.h"

EthernetIPModeBox::EthernetIPModeBox(NetworkManagerConfig& theConfig)
    : Gtk::Box(Gtk::Orientation::VERTICAL),
      config(theConfig),
      ethernetPath(config.getEthernetConnectionPath()),
      modeLabel("Mode"),
      staticButton("Static IP"),
      dynamicButton("Dynamic IP") {
  logLine("Ethernet Path: ", ethernetPath);
  layOutChoice(*this, modeLabel, frame, grid, {&staticButton, &dynamicButton});
  staticButton.set_group(dynamicButton);
}

std::string EthernetIPModeBox::getSelectedMode() const {
  if (staticButton.get_active()) return std::string(ETHERNET_STATIC_MODE);
  if (dynamicButton.get_active()) return std::string(ETHERNET_DYNAMIC_MODE);
  return {};
}

void EthernetIPModeBox::setStaticActive() { staticButton.set_active(true); }

void EthernetIPModeBox::setDynamicActive() { dynamicButton.set_active(true); }

void EthernetIPModeBox::connectModeButtons(EthernetCredentialsBox& credentialsBox) {
  for (Gtk::CheckButton* button : {&staticButton, &dynamicButton})
    button->signal_toggled().connect(sigc::bind(
        sigc::mem_fun(*this, &EthernetIPModeBox::onModeToggled), std::ref(credentialsBox)));
}

void EthernetIPModeBox::onModeToggled(EthernetCredentialsBox& credentialsBox) {
  logLine("Ethernet button has changed");
  if (staticButton.get_active()) {
    credentialsBox.set_visible(true);
  } else if (dynamicButton.get_active()) {
    credentialsBox.set_visible(false);
  }
}

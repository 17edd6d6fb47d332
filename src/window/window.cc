// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "window/NetworkManagerWindow.h"

#include "settings/wifi.h"
#include "widgets/accessible.h"
#include "widgets/layout.h"

namespace {

constexpr int MAIN_SPACING = 1;
constexpr int BUTTON_SPACING = 50;

}  // namespace

NetworkManagerWindow::NetworkManagerWindow()
    : config(&NetworkManagerConfig::getInstance()),
      mainBox(Gtk::Orientation::VERTICAL),
      buttonBox(Gtk::Orientation::HORIZONTAL),
      ethernetGrid(*config),
      wifiGrid(*config),
      button1("button 1"),
      button2("button 2"),
      exitButton("Exit Without Saving"),
      saveButton("Save And Exit"),
      wifiPath(config->getWifiConnectionPath()),
      ethernetPath(config->getEthernetConnectionPath()) {
  set_title("ZOR Network Manager");
  refreshCurrentPage();  // before there is a layout, on purpose: it sets the first default size
  set_resizable(false);
  buildLayout();
  connectSignals();

  selectedWifiMode = wifiGrid.getModeBox().getSelectedMode();
  selectedEthernetMode = ethernetGrid.getIPModeBox().getSelectedMode();  // nothing is chosen yet
  if (selectedWifiMode == WIFI_AP_MODE) populateWifiSettingsFromFile();
  setSelectedEthernetMode();
  populateEthernetSettingsFromFile();
}

NetworkManagerWindow::~NetworkManagerWindow() {
  // A notebook may switch pages while it is taken down; what the handler needs is gone by then.
  switchPageConnection.disconnect();
}

void NetworkManagerWindow::buildLayout() {
  // window > main box > notebook, and the row of buttons below it
  mainBox.set_margin(MARGIN);
  mainBox.set_spacing(MAIN_SPACING);
  mainBox.append(notebook);
  mainBox.append(buttonBox);

  // window > main box > button box > buttons
  buttonBox.set_spacing(BUTTON_SPACING);
  buttonBox.set_halign(Gtk::Align::CENTER);
  for (Gtk::Button* button : {&saveButton, &exitButton}) {
    buttonBox.append(*button);
    button->set_hexpand(false);
    button->set_halign(Gtk::Align::CENTER);
  }

  // window > main box > notebook > pages
  notebook.set_margin(MARGIN);
  notebook.set_expand(true);
  notebook.set_tab_pos(Gtk::PositionType::TOP);
  notebook.append_page(ethernetGrid, "Ethernet");
  notebook.append_page(wifiGrid, "Wifi");
  nameTabs(notebook);
  focusTabs(notebook);

  ethernetGrid.set_margin(MARGIN);  // the page has done both itself; kept
  ethernetGrid.set_visible(true);
  notebook.set_visible(true);
  set_child(mainBox);
}

void NetworkManagerWindow::connectSignals() {
  exitButton.signal_clicked().connect(
      sigc::mem_fun(*this, &NetworkManagerWindow::closeWithoutSaving));
  saveButton.signal_clicked().connect(sigc::mem_fun(*this, &NetworkManagerWindow::saveAndExit));
  switchPageConnection = notebook.signal_switch_page().connect(
      sigc::mem_fun(*this, &NetworkManagerWindow::onSwitchPage));

  // Each toggle, on or off, applies its button's mode. The button that goes off reports first, so
  // the last mode applied is the chosen one.
  WifiModeBox& wifiModes = wifiGrid.getModeBox();
  EthernetIPModeBox& ethernetModes = ethernetGrid.getIPModeBox();
  wifiModes.getClientButton().signal_toggled().connect(
      [this] { updateModeView(WIFI_CLIENT_MODE); });
  wifiModes.getAccessPointButton().signal_toggled().connect(
      [this] { updateModeView(WIFI_AP_MODE); });
  wifiModes.getDisabledButton().signal_toggled().connect(
      [this] { updateModeView(WIFI_DISABLED_MODE); });
  ethernetModes.getStaticButton().signal_toggled().connect(
      [this] { updateModeView(ETHERNET_STATIC_MODE); });
  ethernetModes.getDynamicButton().signal_toggled().connect(
      [this] { updateModeView(ETHERNET_DYNAMIC_MODE); });
}

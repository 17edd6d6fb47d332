// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "window/NetworkManagerWindow.h"

#include <initializer_list>

#include "base/print.h"
#include "settings/wifi.h"
#include "widgets/accessible.h"
#include "widgets/layout.h"

namespace {

constexpr int WINDOW_WIDTH = 525;
constexpr int BASIC_HEIGHT = 425;
constexpr int STATIC_ETHERNET_HEIGHT = 475;
constexpr int ACCESS_POINT_HEIGHT = 500;

constexpr int MAIN_SPACING = 1;
constexpr int BUTTON_SPACING = 50;

void setAllVisible(std::initializer_list<Gtk::Widget*> widgets, bool visible, Gtk::Widget& grid) {
  for (Gtk::Widget* widget : widgets) widget->set_visible(visible);
  grid.queue_allocate();
  grid.queue_resize();
}

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
  refreshCurrentPage();
  set_resizable(false);
  buildLayout();
  connectSignals();

  selectedWifiMode = wifiGrid.getModeBox().getSelectedMode();
  selectedEthernetMode = ethernetGrid.getIPModeBox().getSelectedMode();
  if (selectedWifiMode == WIFI_AP_MODE) populateWifiSettingsFromFile();
  setSelectedEthernetMode();
  populateEthernetSettingsFromFile();
}

NetworkManagerWindow::~NetworkManagerWindow() {
  // A notebook that is taken down may switch pages, and the members are going by then.
  switchPageConnection.disconnect();
}

void NetworkManagerWindow::buildLayout() {
  mainBox.set_margin(MARGIN);
  mainBox.set_spacing(MAIN_SPACING);
  mainBox.append(notebook);
  mainBox.append(buttonBox);

  buttonBox.set_spacing(BUTTON_SPACING);
  buttonBox.set_halign(Gtk::Align::CENTER);
  for (Gtk::Button* button : {&saveButton, &exitButton}) {
    buttonBox.append(*button);
    button->set_hexpand(false);
    button->set_halign(Gtk::Align::CENTER);
  }

  notebook.set_margin(MARGIN);
  notebook.set_expand(true);
  notebook.set_tab_pos(Gtk::PositionType::TOP);
  notebook.append_page(ethernetGrid, "Ethernet");
  notebook.append_page(wifiGrid, "Wifi");
  nameTabs(notebook);

  ethernetGrid.set_margin(MARGIN);
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

  // Each toggle, on or off, applies its button's mode. The button that goes off reports first.
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

void NetworkManagerWindow::updateModeView(std::string_view mode) {
  logLine("Current Page: ", std::to_string(currentPage));
  if (currentPage == ETHERNET_PAGE) {
    updateEthernetView(mode);
  } else if (currentPage == WIFI_PAGE) {
    updateWifiView(mode);
  }
  queue_allocate();
  queue_resize();
}

void NetworkManagerWindow::updateEthernetView(std::string_view mode) {
  hideWifiWidgets();
  showEthernetWidgets();
  selectedEthernetMode = mode;
  if (mode == ETHERNET_STATIC_MODE) {
    logLine("Ethernet static (manual)");
    ethernetGrid.getCredentialsBox().set_visible(true);
    set_default_size(WINDOW_WIDTH, STATIC_ETHERNET_HEIGHT);
    return;
  }
  if (mode == ETHERNET_DYNAMIC_MODE) {
    logLine("Ethernet dynamic (auto)");
    ethernetGrid.getCredentialsBox().set_visible(false);
  }
  set_default_size(WINDOW_WIDTH, BASIC_HEIGHT);
}

void NetworkManagerWindow::updateWifiView(std::string_view mode) {
  hideEthernetWidgets();
  showWifiWidgets();
  selectedWifiMode = mode;
  if (mode == WIFI_AP_MODE) {
    wifiGrid.getAPCredentials().set_visible(true);
    set_default_size(WINDOW_WIDTH, ACCESS_POINT_HEIGHT);
    return;
  }
  if (mode != WIFI_CLIENT_MODE) wifiGrid.getCredentials().set_visible(false);
  set_default_size(WINDOW_WIDTH, BASIC_HEIGHT);
}

void NetworkManagerWindow::refreshCurrentPage() {
  if (currentPage == ETHERNET_PAGE) {
    updateModeView(selectedEthernetMode);
  } else if (currentPage == WIFI_PAGE) {
    updateModeView(selectedWifiMode);
  } else {
    logError("Unknown notebook page: ", std::to_string(currentPage));
  }
}

void NetworkManagerWindow::onSwitchPage(Gtk::Widget* /*page*/, guint pageNumber) {
  logLine("Switched to tab with index ", std::to_string(pageNumber));
  currentPage = static_cast<int>(pageNumber);
  if (currentPage == ETHERNET_PAGE) {
    hideWifiWidgets();
    showEthernetWidgets();
    updateModeView(selectedEthernetMode);
  } else if (currentPage == WIFI_PAGE) {
    hideEthernetWidgets();
    showWifiWidgets();
    updateModeView(selectedWifiMode);
  }
}

void NetworkManagerWindow::hideWifiWidgets() {
  setAllVisible({&wifiGrid.getAPCredentials(), &wifiGrid.getDeviceBox(), &wifiGrid.getCredentials(),
                 &wifiGrid.getModeBox()},
                false, wifiGrid);
}

void NetworkManagerWindow::showWifiWidgets() {
  // Not the access point's entries: they belong to one mode only.
  setAllVisible({&wifiGrid.getDeviceBox(), &wifiGrid.getCredentials(), &wifiGrid.getModeBox()},
                true, wifiGrid);
}

void NetworkManagerWindow::hideEthernetWidgets() {
  setAllVisible({&ethernetGrid.getCredentialsBox(), &ethernetGrid.getDeviceBox(),
                 &ethernetGrid.getIPModeBox()},
                false, ethernetGrid);
}

void NetworkManagerWindow::showEthernetWidgets() {
  setAllVisible({&ethernetGrid.getCredentialsBox(), &ethernetGrid.getDeviceBox(),
                 &ethernetGrid.getIPModeBox()},
                true, ethernetGrid);
}

void NetworkManagerWindow::closeWithoutSaving() {
  config->runPermissionsHandler("rollback", "");
  logLine("Closing program without saving");
  hide();
}

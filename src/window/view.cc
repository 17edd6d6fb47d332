// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "window/NetworkManagerWindow.h"

#include <initializer_list>

#include "base/print.h"
#include "settings/ethernet.h"
#include "settings/wifi.h"

namespace {

constexpr int WINDOW_WIDTH = 525;
constexpr int BASIC_HEIGHT = 425;
constexpr int STATIC_ETHERNET_HEIGHT = 475;
constexpr int ACCESS_POINT_HEIGHT = 500;

void setAllVisible(std::initializer_list<Gtk::Widget*> widgets, bool visible, Gtk::Widget& grid) {
  for (Gtk::Widget* widget : widgets) widget->set_visible(visible);
  grid.queue_allocate();
  grid.queue_resize();
}

}  // namespace

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
  // The mode's view hides and shows once more; both are kept.
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

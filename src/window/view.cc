// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "window/NetworkManagerWindow.h"

#include "base/print.h"
#include "settings/ethernet.h"
#include "settings/wifi.h"

namespace {

constexpr int WINDOW_WIDTH = 525;
constexpr int BASIC_HEIGHT = 425;
constexpr int STATIC_ETHERNET_HEIGHT = 475;
constexpr int ACCESS_POINT_HEIGHT = 500;

void queueLayout(Gtk::Widget& widget) {
  widget.queue_allocate();
  widget.queue_resize();
}

void setPartsVisible(WifiGrid& grid, bool visible) {
  grid.getDeviceBox().set_visible(visible);
  grid.getCredentials().set_visible(visible);
  grid.getModeBox().set_visible(visible);
  queueLayout(grid);
}

void setPartsVisible(EthernetGrid& grid, bool visible) {
  grid.getCredentialsBox().set_visible(visible);
  grid.getDeviceBox().set_visible(visible);
  grid.getIPModeBox().set_visible(visible);
  queueLayout(grid);
}

}  // namespace

void NetworkManagerWindow::updateModeView(std::string_view mode) {
  logLine("Current Page: ", std::to_string(currentPage));
  if (currentPage == ETHERNET_PAGE) {
    updateEthernetView(mode);
  } else if (currentPage == WIFI_PAGE) {
    updateWifiView(mode);
  }
  queueLayout(*this);
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
  wifiGrid.getAPCredentials().set_visible(false);
  setPartsVisible(wifiGrid, false);
}

// Not the access point's entries: they belong to one mode only.
void NetworkManagerWindow::showWifiWidgets() { setPartsVisible(wifiGrid, true); }

void NetworkManagerWindow::hideEthernetWidgets() { setPartsVisible(ethernetGrid, false); }

void NetworkManagerWindow::showEthernetWidgets() { setPartsVisible(ethernetGrid, true); }

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <climits>

#include "window/window_test.h"

namespace {

const std::string ETHERNET_PARTS = "ethernet-device ethernet-mode";
const std::string ALL_ETHERNET_PARTS = ETHERNET_PARTS + " ethernet-entries";
const std::string WIFI_PARTS = "wifi-device wifi-mode";
const std::string CLIENT_PARTS = WIFI_PARTS + " wifi-credentials";
const std::string AP_PARTS = CLIENT_PARTS + " access-point";

class View : public WindowTest {
 protected:
  /** The mode that the window keeps for a page is printed when its keyfile is looked at. */
  static std::string afterSelected(const std::string& printed) {
    const std::string marker = " selected mode: ";
    const auto start = printed.find(marker) + marker.size();
    return printed.substr(start, printed.find('\n', start) - start);
  }
  std::string keptEthernetMode() {
    return afterSelected(printedBy([this] { window->resetEthernetFileOnModeChange(); }));
  }
  std::string keptWifiMode() {
    return afterSelected(printedBy([this] { window->resetWifiFileOnModeChange(); }));
  }
};

// ---- A mode applied to the page in front

TEST_F(View, ModeOnTheEthernetPageShowsOrHidesTheEntries) {
  const struct {
    std::string mode;
    std::string printed;
    std::pair<int, int> size;
    std::string parts;
  } cases[] = {
      {"manual", "Ethernet static (manual)\n", {525, 475}, ALL_ETHERNET_PARTS},
      {"auto", "Ethernet dynamic (auto)\n", {525, 425}, ETHERNET_PARTS},
      {"", "", {525, 425}, ALL_ETHERNET_PARTS},
      {"infrastructure", "", {525, 425}, ALL_ETHERNET_PARTS},
      {"ap", "", {525, 425}, ALL_ETHERNET_PARTS},
      {"disabled", "", {525, 425}, ALL_ETHERNET_PARTS},
      {"Manual", "", {525, 425}, ALL_ETHERNET_PARTS},
  };
  for (const auto& wanted : cases) {
    open(DYNAMIC_KEYFILE, AP_KEYFILE, ETHERNET);
    EXPECT_EQ(printedBy([&] { window->updateModeView(wanted.mode); }),
              "Current Page: 0\n" + wanted.printed);
    EXPECT_EQ(defaultSize(), wanted.size) << wanted.mode;
    EXPECT_EQ(visibleParts(), wanted.parts) << wanted.mode;
    EXPECT_EQ(keptEthernetMode(), wanted.mode);
    EXPECT_EQ(keptWifiMode(), "ap");
  }
}

TEST_F(View, ModeOnTheWifiPageShowsTheAccessPointsPartButLeavesHidingItToTheModeBox) {
  const struct {
    std::string mode;
    std::pair<int, int> size;
    std::string partsAfterClient;
    std::string partsAfterAccessPoint;
  } cases[] = {
      {"ap", {525, 500}, AP_PARTS, AP_PARTS},
      {"infrastructure", {525, 425}, CLIENT_PARTS, AP_PARTS},
      {"disabled", {525, 425}, WIFI_PARTS, WIFI_PARTS + " access-point"},
      {"", {525, 425}, WIFI_PARTS, WIFI_PARTS + " access-point"},
      {"manual", {525, 425}, WIFI_PARTS, WIFI_PARTS + " access-point"},
      {"auto", {525, 425}, WIFI_PARTS, WIFI_PARTS + " access-point"},
      {"AP", {525, 425}, WIFI_PARTS, WIFI_PARTS + " access-point"},
  };
  for (const auto& wanted : cases) {
    for (const bool accessPoint : {false, true}) {
      open(DYNAMIC_KEYFILE, accessPoint ? AP_KEYFILE : CLIENT_KEYFILE, WIFI);
      EXPECT_EQ(printedBy([&] { window->updateModeView(wanted.mode); }), "Current Page: 1\n");
      EXPECT_EQ(defaultSize(), wanted.size) << wanted.mode;
      EXPECT_EQ(visibleParts(),
                accessPoint ? wanted.partsAfterAccessPoint : wanted.partsAfterClient)
          << wanted.mode;
      EXPECT_EQ(keptWifiMode(), wanted.mode);
      EXPECT_EQ(keptEthernetMode(), "auto");
    }
  }
}

TEST_F(View, ModeOnAnyOtherPageChangesNothing) {
  open(STATIC_KEYFILE, CLIENT_KEYFILE, ETHERNET);
  const std::string parts = visibleParts();
  EXPECT_EQ(printedBy([this] { window->onSwitchPage(nullptr, 2); }),
            "Switched to tab with index 2\n");
  EXPECT_EQ(printedBy([this] { window->updateModeView("auto"); }), "Current Page: 2\n");
  EXPECT_EQ(visibleParts(), parts);
  EXPECT_EQ(defaultSize(), std::pair(525, 475));
  EXPECT_EQ(keptEthernetMode(), "manual");
  EXPECT_EQ(keptWifiMode(), "infrastructure");
}

TEST_F(View, RefreshAppliesTheModeOfThePageInFront) {
  open(STATIC_KEYFILE, CLIENT_KEYFILE, ETHERNET);
  const auto refresh = [this] { window->refreshCurrentPage(); };
  EXPECT_EQ(printedBy(refresh), "Current Page: 0\nEthernet static (manual)\n");

  showPage(WIFI);
  window->hideWifiWidgets();
  EXPECT_EQ(printedBy(refresh), "Current Page: 1\n");
  EXPECT_EQ(visibleParts(), CLIENT_PARTS);

  printedBy([this] { window->onSwitchPage(nullptr, 7); });
  EXPECT_EQ(printedBy(refresh), "! Unknown notebook page: 7\n");
  printedBy([this] { window->onSwitchPage(nullptr, UINT_MAX); });
  EXPECT_TRUE(printedBy(refresh).starts_with("! Unknown notebook page: "));
}

TEST_F(View, ModeItselfHidesTheOtherPageAndShowsItsOwn) {
  open(DYNAMIC_KEYFILE, CLIENT_KEYFILE, WIFI);
  choose("Static IP");  // shows the entries by itself; on this page it is a mode like any other
  EXPECT_EQ(visibleParts(), WIFI_PARTS);
  showPage(ETHERNET);
  window->hideEthernetWidgets();
  printedBy([this] { window->updateModeView("auto"); });
  EXPECT_EQ(visibleParts(), ETHERNET_PARTS);
}

// ---- Buttons

TEST_F(View, EthernetButtonsApplyTheModeOfTheOneGoingOffFirst) {
  open(DYNAMIC_KEYFILE, CLIENT_KEYFILE, ETHERNET);
  EXPECT_EQ(choose("Static IP"),
            lines({"Ethernet button has changed", "Current Page: 0", "Ethernet dynamic (auto)",
                   "Ethernet button has changed", "Current Page: 0", "Ethernet static (manual)"}));
  EXPECT_EQ(visibleParts(), ALL_ETHERNET_PARTS);
  EXPECT_EQ(defaultSize(), std::pair(525, 475));
  EXPECT_EQ(choose("Dynamic IP"),
            lines({"Ethernet button has changed", "Current Page: 0", "Ethernet static (manual)",
                   "Ethernet button has changed", "Current Page: 0", "Ethernet dynamic (auto)"}));
  EXPECT_EQ(visibleParts(), ETHERNET_PARTS);
  EXPECT_EQ(defaultSize(), std::pair(525, 425));
  EXPECT_EQ(keptEthernetMode(), "auto");
}

TEST_F(View, WifiButtonsShowWhatBelongsToTheMode) {
  open(DYNAMIC_KEYFILE, CLIENT_KEYFILE, WIFI);
  EXPECT_EQ(visibleParts(), CLIENT_PARTS);
  EXPECT_EQ(choose("Access Point"), lines({"Current Page: 1", "Current Page: 1"}));
  EXPECT_EQ(visibleParts(), AP_PARTS);
  EXPECT_EQ(defaultSize(), std::pair(525, 500));
  choose("Disabled");
  EXPECT_EQ(visibleParts(), WIFI_PARTS);
  EXPECT_EQ(defaultSize(), std::pair(525, 425));
  choose("Client");
  EXPECT_EQ(visibleParts(), CLIENT_PARTS);
  EXPECT_EQ(defaultSize(), std::pair(525, 425));
  EXPECT_EQ(keptWifiMode(), "infrastructure");
}

TEST_F(View, WifiButtonsOnTheEthernetPageSetTheEthernetMode) {
  for (const auto& [button, mode] :
       {std::pair("Client", "infrastructure"), std::pair("Access Point", "ap"),
        std::pair("Disabled", "disabled")}) {
    open(STATIC_KEYFILE, "", ETHERNET);
    choose(button == std::string("Disabled") ? "Client" : "Disabled");
    EXPECT_EQ(choose(button), lines({"Current Page: 0", "Current Page: 0"}));
    EXPECT_EQ(defaultSize(), std::pair(525, 425));
    EXPECT_EQ(keptEthernetMode(), mode);
    EXPECT_EQ(ethernetMode(), "Static IP");
    EXPECT_EQ(keptWifiMode(), "disabled");

    open(STATIC_KEYFILE, "", ETHERNET);
    choose(button);
    printedBy([this] { window->updateModeView("manual"); });
    printedBy([&] { labelled<Gtk::CheckButton>(*window, button).set_active(false); });
    EXPECT_EQ(keptEthernetMode(), mode) << "a button that goes off applies its mode, too";
  }
}

TEST_F(View, EthernetButtonsOnTheWifiPageSetTheWifiMode) {
  open(STATIC_KEYFILE, AP_KEYFILE, WIFI);
  EXPECT_EQ(choose("Dynamic IP"), lines({"Ethernet button has changed", "Current Page: 1",
                                         "Ethernet button has changed", "Current Page: 1"}));
  EXPECT_EQ(keptWifiMode(), "auto");
  EXPECT_EQ(wifiMode(), "Access Point");
  EXPECT_EQ(keptEthernetMode(), "manual");
}

// ---- Pages

TEST_F(View, PagesPrintTheirSwitchAndTheirMode) {
  open(STATIC_KEYFILE, AP_KEYFILE, ETHERNET);
  EXPECT_EQ(showPage(WIFI), lines({"Switched to tab with index 1", "Current Page: 1"}));
  EXPECT_EQ(showPage(ETHERNET),
            lines({"Switched to tab with index 0", "Current Page: 0", "Ethernet static (manual)"}));
}

TEST_F(View, PagesHideEachOthersParts) {
  const struct {
    std::string ethernetKeyfile;
    std::string wifiKeyfile;
    std::string ethernetParts;
    std::pair<int, int> ethernetSize;
    std::string wifiParts;
    std::pair<int, int> wifiSize;
  } cases[] = {
      {STATIC_KEYFILE, AP_KEYFILE, ALL_ETHERNET_PARTS, {525, 475}, AP_PARTS, {525, 500}},
      {DYNAMIC_KEYFILE, CLIENT_KEYFILE, ETHERNET_PARTS, {525, 425}, CLIENT_PARTS, {525, 425}},
      {"", "", ETHERNET_PARTS, {525, 425}, WIFI_PARTS, {525, 425}},
  };
  for (const auto& wanted : cases) {
    for (const std::string& name : {ethernetFile(), wifiFile()}) std::remove(name.c_str());
    open(wanted.ethernetKeyfile, wanted.wifiKeyfile, ETHERNET);
    EXPECT_EQ(visibleParts(), wanted.ethernetParts);
    for (int round = 0; round < 2; ++round) {
      showPage(WIFI);
      EXPECT_EQ(visibleParts(), wanted.wifiParts);
      EXPECT_EQ(defaultSize(), wanted.wifiSize);
      showPage(ETHERNET);
      EXPECT_EQ(visibleParts(), wanted.ethernetParts);
      EXPECT_EQ(defaultSize(), wanted.ethernetSize);
    }
  }
}

TEST_F(View, PartsAreHiddenAndShownInGroups) {
  open(STATIC_KEYFILE, AP_KEYFILE, ETHERNET);
  window->hideEthernetWidgets();
  EXPECT_EQ(visibleParts(), "");
  window->showWifiWidgets();
  EXPECT_EQ(visibleParts(), CLIENT_PARTS) << "the access point's part, though its mode is chosen";
  window->hideWifiWidgets();
  window->showEthernetWidgets();
  EXPECT_EQ(visibleParts(), ALL_ETHERNET_PARTS);
}

TEST_F(View, AThirdPageIsOnlyRemembered) {
  open(STATIC_KEYFILE, AP_KEYFILE, ETHERNET);
  Gtk::Label third;
  notebook().append_page(third, "Third");
  EXPECT_EQ(showPage(2), "Switched to tab with index 2\n");
  EXPECT_EQ(visibleParts(), ALL_ETHERNET_PARTS);
  EXPECT_EQ(printedBy([this] { window->refreshCurrentPage(); }), "! Unknown notebook page: 2\n");
  notebook().remove_page(third);
}

}  // namespace

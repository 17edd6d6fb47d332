// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtkmm/checkbutton.h>
#include <gtkmm/entry.h>

#include "support/keyfile_test.h"
#include "support/printed.h"
#include "support/widgets.h"
#include "widgets/EthernetGrid.h"

namespace {

class EthernetPage : public KeyfileTest {
 protected:
  NetworkManagerConfig& config = NetworkManagerConfig::getInstance();

  /** The keyfile that the widgets read their first values from. */
  void ethernetKeyfile(const std::string& connectionLines) {
    writeBytes(directory.file("wired"), "[connection]\ntype=ethernet\n" + connectionLines);
    loadKeyfiles();
  }
};

// ---- The entries

TEST_F(EthernetPage, CredentialsBoxHasFourLabelledEntriesBelowEachOther) {
  EthernetCredentialsBox box(config);
  EXPECT_EQ(describe(box), R"(Box horizontal
  Grid
    (0,0,1,1) Label "IP Address" margin=5
    (1,0,1,1) Entry ""
    (0,1,1,1) Label "Subnet Mask" margin=5
    (1,1,1,1) Entry ""
    (0,2,1,1) Label "Default Gateway" margin=5
    (1,2,1,1) Entry ""
    (0,3,1,1) Label "DNS Server" margin=5
    (1,3,1,1) Entry ""
)");
}

TEST_F(EthernetPage, EachGetterAndSetterIsOfTheEntryBesideItsLabel) {
  EthernetCredentialsBox box(config);
  box.setIpAddress("1.1.1.1");
  box.setSubnetMask("2.2.2.2");
  box.setDefaultGateway("3.3.3.3");
  box.setDnsServer("4.4.4.4");
  EXPECT_EQ(fieldOf<Gtk::Entry>(box, "IP Address").get_text().raw(), "1.1.1.1");
  EXPECT_EQ(fieldOf<Gtk::Entry>(box, "Subnet Mask").get_text().raw(), "2.2.2.2");
  EXPECT_EQ(fieldOf<Gtk::Entry>(box, "Default Gateway").get_text().raw(), "3.3.3.3");
  EXPECT_EQ(fieldOf<Gtk::Entry>(box, "DNS Server").get_text().raw(), "4.4.4.4");

  box.setAllEntries("a", "b", "c", "d");
  EXPECT_EQ(box.getIpAddress().raw(), "a");
  EXPECT_EQ(box.getSubnetMask().raw(), "b");
  EXPECT_EQ(box.getDefaultGateway().raw(), "c");
  EXPECT_EQ(box.getDnsServer().raw(), "d");
}

TEST_F(EthernetPage, BytesThatAreNoUtf8ShowAsReplacementCharacters) {
  EthernetCredentialsBox box(config);
  box.setAllEntries("\xff", "a\xc3", "\xc3\xa9", "b\x80z");
  EXPECT_EQ(box.getIpAddress().raw(), "\uFFFD");
  EXPECT_EQ(box.getSubnetMask().raw(), "a\uFFFD");
  EXPECT_EQ(box.getDefaultGateway().raw(), "\u00E9");
  EXPECT_EQ(box.getDnsServer().raw(), "b\uFFFDz");
}

// ---- The device

TEST_F(EthernetPage, DeviceBoxShowsItsLabelAboveAReadOnlyEntry) {
  ethernetKeyfile("");
  EthernetDeviceBox box(config);
  EXPECT_EQ(describe(box), R"(Box vertical
  Grid equal-columns equal-rows hexpand vexpand valign=center margin=5
    (0,0,1,1) Label "Device" halign=center valign=center margin=5
    (0,1,1,1) Entry "eth0" read-only hexpand vexpand halign=center valign=center margin=5
)");
}

struct DeviceCase {
  std::string stored;
  std::string shown;
};

TEST_F(EthernetPage, DeviceBoxShowsTheInterfaceOfTheKeyfile) {
  const std::string longName(98, 'x');
  const DeviceCase cases[] = {
      {"interface-name=enp3s0\n", "enp3s0"},
      {"Interface-Name = eth7 ; the second\n", "eth7"},
      {"interface-name=\n", ""},
      {"[ipv4]\ninterface-name=eth9\n", "eth0"},
      {"interface-name=" + longName + "yz\n", longName + "y"},
      {"interface-name=" + longName + "\u00E9\n", longName + "\uFFFD"},
      {"interface-name=\xff\n", "\uFFFD"},
  };
  for (const DeviceCase& wanted : cases) {
    ethernetKeyfile(wanted.stored);
    EthernetDeviceBox box(config);
    EXPECT_EQ(widgetOf<Gtk::Entry>(box).get_text().raw(), wanted.shown) << wanted.stored;
  }
}

TEST_F(EthernetPage, DeviceBoxShowsTheDefaultWithoutAKeyfile) {
  loadKeyfiles();
  EthernetDeviceBox box(config);
  EXPECT_EQ(widgetOf<Gtk::Entry>(box).get_text().raw(), "eth0");
}

// ---- The mode

TEST_F(EthernetPage, ModeBoxFramesTheTwoButtonsAndChoosesNone) {
  EthernetIPModeBox box(config);
  EXPECT_EQ(describe(box), R"(Box vertical
  Label "Mode" margins=5,0,5,0
  Frame margin=5
    Grid equal-columns equal-rows margin=5
      (0,0,1,1) CheckButton "Static IP" halign=center valign=center
      (1,0,1,1) CheckButton "Dynamic IP" halign=center valign=center
)");
  EXPECT_EQ(box.getSelectedMode(), "");
}

TEST_F(EthernetPage, ModeButtonsExcludeEachOther) {
  EthernetIPModeBox box(config);
  EXPECT_EQ(&box.getStaticButton(), &labelled<Gtk::CheckButton>(box, "Static IP"));
  EXPECT_EQ(&box.getDynamicButton(), &labelled<Gtk::CheckButton>(box, "Dynamic IP"));

  box.setStaticActive();
  EXPECT_TRUE(box.getStaticButton().get_active());
  EXPECT_EQ(box.getSelectedMode(), "manual");

  box.setDynamicActive();
  EXPECT_TRUE(box.getDynamicButton().get_active());
  EXPECT_FALSE(box.getStaticButton().get_active());
  EXPECT_EQ(box.getSelectedMode(), "auto");

  box.setStaticActive();
  EXPECT_FALSE(box.getDynamicButton().get_active());
}

TEST_F(EthernetPage, ModeHandlerLeavesTheEntriesAloneWhileNothingIsChosen) {
  EthernetIPModeBox modeBox(config);
  EthernetCredentialsBox entries(config);
  for (const bool visible : {true, false}) {
    entries.set_visible(visible);
    EXPECT_EQ(printedBy([&] { modeBox.onModeToggled(entries); }), "Ethernet button has changed\n");
    EXPECT_EQ(entries.get_visible(), visible);
  }
}

// ---- The page

TEST_F(EthernetPage, GridPlacesItsBoxesAndLeavesColumnZeroEmpty) {
  EthernetGrid grid(config);
  EXPECT_EQ(describe(grid, 1), R"(Grid hexpand vexpand valign=start margin=5
  (1,0,1,1) Box vertical
  (1,1,3,1) Box vertical hexpand vexpand
  (1,2,3,1) Box horizontal hexpand vexpand halign=center
)");
  EXPECT_EQ(grid.get_child_at(1, 0), &grid.getDeviceBox());
  EXPECT_EQ(grid.get_child_at(1, 1), &grid.getIPModeBox());
  EXPECT_EQ(grid.get_child_at(1, 2), &grid.getCredentialsBox());
}

TEST_F(EthernetPage, GridPrintsTheKeyfileAndOneChange) {
  ethernetKeyfile("");
  EXPECT_EQ(printedBy([&] { EthernetGrid grid(config); }),
            lines({"Ethernet Path: " + directory.file("wired"), "Ethernet button has changed"}));
}

TEST_F(EthernetPage, EntriesFollowTheModeButtons) {
  EthernetGrid grid(config);
  EthernetIPModeBox& modeBox = grid.getIPModeBox();
  const EthernetCredentialsBox& entries = grid.getCredentialsBox();
  EXPECT_EQ(modeBox.getSelectedMode(), "");
  EXPECT_TRUE(entries.get_visible());

  // The first choice only switches a button on; later ones switch the other one off as well.
  const std::string change = "Ethernet button has changed\n";
  EXPECT_EQ(printedBy([&] { modeBox.setDynamicActive(); }), change);
  EXPECT_FALSE(entries.get_visible());
  EXPECT_EQ(printedBy([&] { modeBox.setStaticActive(); }), change + change);
  EXPECT_TRUE(entries.get_visible());
  EXPECT_EQ(printedBy([&] { modeBox.getDynamicButton().set_active(true); }), change + change);
  EXPECT_FALSE(entries.get_visible());
  EXPECT_EQ(printedBy([&] { modeBox.setDynamicActive(); }), "");
}

}  // namespace

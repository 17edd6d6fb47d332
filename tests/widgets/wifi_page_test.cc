// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gdkmm/frameclock.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/dropdown.h>
#include <gtkmm/entry.h>
#include <gtkmm/togglebutton.h>
#include <gtkmm/window.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>

#include "support/keyfile_test.h"
#include "support/printed.h"
#include "support/widgets.h"
#include "widgets/WifiGrid.h"

namespace {

class WifiPage : public KeyfileTest {
 protected:
  NetworkManagerConfig& config = NetworkManagerConfig::getInstance();

  /** The keyfile that the widgets read their first values from. */
  void wifiKeyfile(const std::string& more) {
    writeBytes(directory.file("wireless"), "[connection]\ntype=wifi\n" + more);
    loadKeyfiles();
  }
};

// ---- The device

TEST_F(WifiPage, DeviceBoxShowsItsLabelAboveAReadOnlyEntry) {
  loadKeyfiles();
  DeviceBox box(config);
  EXPECT_EQ(describe(box), R"(Box vertical
  Grid equal-columns equal-rows hexpand vexpand valign=center margin=5
    (0,0,1,1) Label "Device" halign=center valign=center margin=5
    (0,1,1,1) Entry "wlan0" read-only hexpand vexpand halign=center valign=center margin=5
)");
  EXPECT_EQ(&box.getDeviceEntry(), &widgetOf<Gtk::Entry>(box));
}

TEST_F(WifiPage, DeviceBoxShowsTheInterfaceOfTheKeyfile) {
  const struct {
    std::string stored;
    std::string shown;
  } cases[] = {{"interface-name=wlp2s0\n", "wlp2s0"},
               {"", "wlan0"},
               {"interface-name=w\xe9\n", "w\uFFFD"},
               {"interface-name=" + std::string(120, 'w') + "\n", std::string(99, 'w')}};
  for (const auto& wanted : cases) {
    wifiKeyfile(wanted.stored);
    DeviceBox box(config);
    EXPECT_EQ(box.getDeviceEntry().get_text().raw(), wanted.shown);
  }
}

// ---- The mode

TEST_F(WifiPage, ModeBoxFramesTheThreeButtonsDisabledFirst) {
  loadKeyfiles();
  WifiModeBox box(config);
  EXPECT_EQ(describe(box), R"(Box vertical
  Label "Mode" margins=5,0,5,0
  Frame margin=5
    Grid equal-columns equal-rows margin=5
      (0,0,1,1) CheckButton "Disabled" active halign=center valign=center
      (1,0,1,1) CheckButton "Client" halign=center valign=center
      (2,0,1,1) CheckButton "Access Point" halign=center valign=center
)");
}

TEST_F(WifiPage, ModeBoxChoosesExactlyTheModeOfTheKeyfile) {
  const struct {
    std::string stored;
    std::string button;
    std::string mode;
  } cases[] = {{"mode=ap", "Access Point", "ap"},
               {"mode=infrastructure", "Client", "infrastructure"},
               {"mode=disabled", "Disabled", "disabled"},
               {"mode=AP", "Disabled", "disabled"},
               {"mode=Infrastructure", "Disabled", "disabled"},
               {"mode=adhoc", "Disabled", "disabled"},
               {"mode=\"ap \"", "Disabled", "disabled"},
               {"mode=", "Disabled", "disabled"},
               {"ssid=ap", "Disabled", "disabled"},
               {"mode= ap ; chosen", "Access Point", "ap"}};
  for (const auto& wanted : cases) {
    wifiKeyfile("[wifi]\n" + wanted.stored + "\n");
    WifiModeBox box(config);
    for (const char* name : {"Access Point", "Client", "Disabled"})
      EXPECT_EQ(labelled<Gtk::CheckButton>(box, name).get_active(), name == wanted.button)
          << wanted.stored << ": " << name;
    EXPECT_EQ(box.getSelectedMode(), wanted.mode) << wanted.stored;
  }
}

TEST_F(WifiPage, ModeButtonsExcludeEachOther) {
  loadKeyfiles();
  WifiModeBox box(config);
  EXPECT_EQ(&box.getClientButton(), &labelled<Gtk::CheckButton>(box, "Client"));
  EXPECT_EQ(&box.getAccessPointButton(), &labelled<Gtk::CheckButton>(box, "Access Point"));
  EXPECT_EQ(&box.getDisabledButton(), &labelled<Gtk::CheckButton>(box, "Disabled"));
  for (Gtk::CheckButton* chosen :
       {&box.getClientButton(), &box.getAccessPointButton(), &box.getDisabledButton()}) {
    chosen->set_active(true);
    for (Gtk::CheckButton* button :
         {&box.getClientButton(), &box.getAccessPointButton(), &box.getDisabledButton()})
      EXPECT_EQ(button->get_active(), button == chosen);
  }
}

TEST_F(WifiPage, ModeIsDisabledWhileNothingIsChosen) {
  loadKeyfiles();
  WifiModeBox box(config);
  box.getDisabledButton().set_active(false);
  EXPECT_EQ(box.getSelectedMode(), "disabled");
}

TEST_F(WifiPage, ModeHandlerShowsTheAccessPointsPartInThatModeOnly) {
  loadKeyfiles();
  WifiModeBox modeBox(config);
  APCredentials apCredentials(config);
  DHCPBox dhcpBox;
  Gtk::Label note;
  const auto visibleAfter = [&](bool before) {
    for (Gtk::Widget* widget :
         {static_cast<Gtk::Widget*>(&apCredentials), static_cast<Gtk::Widget*>(&dhcpBox),
          static_cast<Gtk::Widget*>(&note)})
      widget->set_visible(before);
    EXPECT_EQ(printedBy([&] { modeBox.onModeToggled(apCredentials, dhcpBox, note); }), "");
    return std::vector<bool>{apCredentials.get_visible(), dhcpBox.get_visible(),
                             note.get_visible()};
  };
  const std::vector<bool> none = {false, false, false};
  const std::vector<bool> all = {true, true, true};
  const std::vector<bool> accessPoint = {true, false, true};

  modeBox.getAccessPointButton().set_active(true);
  EXPECT_EQ(visibleAfter(false), accessPoint);
  EXPECT_EQ(visibleAfter(true), accessPoint);
  modeBox.getClientButton().set_active(true);
  EXPECT_EQ(visibleAfter(true), none);
  modeBox.getDisabledButton().set_active(true);
  EXPECT_EQ(visibleAfter(true), none);
  modeBox.getDisabledButton().set_active(false);
  EXPECT_EQ(visibleAfter(true), all);
  EXPECT_EQ(visibleAfter(false), none);
}

// ---- Name and password

TEST_F(WifiPage, CredentialsStandInOneRowWithThePasswordHidden) {
  wifiKeyfile("[wifi]\nssid=Home Net\n[wifi-security]\npsk=secret-1\n");
  WifiCredentials box(config);
  EXPECT_EQ(describe(box), R"(Box horizontal
  Grid
    (0,0,1,1) Label "SSID" margin=5
    (1,0,1,1) Entry "Home Net"
    (2,0,1,1) Label "Password" margin=5
    (3,0,1,1) Entry "secret-1" shown-as=* for-a-password
    (4,0,1,1) CheckButton "Show Password"
)");
}

TEST_F(WifiPage, ShowPasswordShowsAndHidesIt) {
  wifiKeyfile("");
  WifiCredentials box(config);
  auto& password = fieldOf<Gtk::Entry>(box, "Password");
  auto& show = labelled<Gtk::CheckButton>(box, "Show Password");
  show.set_active(true);
  EXPECT_TRUE(password.get_visibility());
  show.set_active(false);
  EXPECT_FALSE(password.get_visibility());
  EXPECT_EQ(password.get_invisible_char(), gunichar{'*'});
}

TEST_F(WifiPage, CredentialsAreThoseOfTheKeyfileCutTo99Bytes) {
  const std::string many(98, 'p');
  const struct {
    std::string stored;
    std::string ssid;
    std::string password;
  } cases[] = {
      {"[wifi]\nssid=a\n[wifi-security]\npsk=b\n", "a", "b"},
      {"[wifi]\npsk=b\n[wifi-security]\nssid=a\n", "", ""},
      {"[wifi]\nssid=\"a;b\"\n[wifi-security]\npsk=\"#\\\"c \"\n", "a;b", "#\"c "},
      {"[wifi]\nssid=\xff\xfe\n[wifi-security]\npsk=\xc3(\n", "\uFFFD\uFFFD", "\uFFFD("},
      {"[wifi]\nssid=\u00E9\u20AC\u6F22\n", "\u00E9\u20AC\u6F22", ""},
      {"[wifi]\nssid=" + many + "qr\n[wifi-security]\npsk=" + many + "\u00E9\n", many + "q",
       many + "\uFFFD"},
  };
  for (const auto& wanted : cases) {
    wifiKeyfile(wanted.stored);
    const WifiCredentials box(config);
    EXPECT_EQ(box.getSsid().raw(), wanted.ssid);
    EXPECT_EQ(box.getPassword().raw(), wanted.password);
  }
}

TEST_F(WifiPage, CredentialsKeepTheKeyfileTheyBeganWith) {
  wifiKeyfile("[wifi]\nssid=first\n");
  WifiCredentials box(config);
  std::filesystem::rename(directory.file("wireless"), directory.file("moved"));
  loadKeyfiles();
  box.reloadSsid("default");
  EXPECT_EQ(box.getSsid().raw(), "default");
}

TEST_F(WifiPage, CredentialsAreReadAgainWithADefault) {
  wifiKeyfile("[wifi]\nssid=first\n[wifi-security]\npsk=password1\n");
  WifiCredentials box(config);
  fieldOf<Gtk::Entry>(box, "SSID").set_text("typed");
  fieldOf<Gtk::Entry>(box, "Password").set_text("typed");

  wifiKeyfile("[wifi]\nssid=second\n[wifi-security]\npsk=password2\n");
  box.reloadSsid("default");
  EXPECT_EQ(box.getSsid().raw(), "second");
  EXPECT_EQ(box.getPassword().raw(), "typed");
  box.reloadPassword("default");
  EXPECT_EQ(box.getPassword().raw(), "password2");

  wifiKeyfile("");
  box.reloadSsid("default\xff");
  EXPECT_EQ(box.getSsid().raw(), "default\uFFFD");
  box.reloadPassword(std::string(98, 'd') + "\u00E9");
  EXPECT_EQ(box.getPassword().raw(), std::string(98, 'd') + "\uFFFD");
  box.loadFromFile();
  EXPECT_EQ(box.getSsid().raw(), "");
  EXPECT_EQ(box.getPassword().raw(), "");
}

// ---- The access point

TEST_F(WifiPage, AccessPointBoxHasTwoEntriesAndTheTwelveChannels) {
  APCredentials box(config);
  EXPECT_EQ(describe(box), R"tree(Box horizontal
  Grid
    (0,0,1,1) Label "IP Address" margin=5
    (1,0,1,1) Entry ""
    (0,1,1,1) Label "Subnet Mask" margin=5
    (1,1,1,1) Entry ""
    (0,2,1,1) Label "Channel (2.4 GHz)" margin=5
    (1,2,1,1) DropDown Auto 1 2 3 4 5 6 7 8 9 10 11 selected=0
)tree");
}

TEST_F(WifiPage, AccessPointGettersAndSettersAreOfTheEntriesBesideTheirLabels) {
  APCredentials box(config);
  box.setIpAddress("10.42.0.1");
  box.setSubnetMask("255.\xff");
  EXPECT_EQ(fieldOf<Gtk::Entry>(box, "IP Address").get_text().raw(), "10.42.0.1");
  EXPECT_EQ(fieldOf<Gtk::Entry>(box, "Subnet Mask").get_text().raw(), "255.\uFFFD");
  EXPECT_EQ(box.getIpAddress().raw(), "10.42.0.1");
  EXPECT_EQ(box.getSubnetMask().raw(), "255.\uFFFD");
}

TEST_F(WifiPage, ChannelIsSetFromTheNumberAtTheStartOfTheText) {
  const struct {
    std::string text;
    guint selected;
  } cases[] = {{"1", 1},    {"6", 6},          {"11", 11}, {" \t\r\n6 \t\r\n", 6},
               {"6abc", 6}, {"+7", 7},         {"007", 7}, {"0", 0},
               {"", 0},     {" \t", 0},        {"12", 0},  {"-1", 0},
               {"0x5", 0},  {"2147483647", 0}, {"6.9", 6}, {"-2147483648", 0}};
  for (const auto& wanted : cases) {
    APCredentials box(config);
    auto& channel = widgetOf<Gtk::DropDown>(box);
    channel.set_selected(wanted.selected == 3 ? 4 : 3);
    box.setChannel(wanted.text);
    EXPECT_EQ(channel.get_selected(), wanted.selected) << wanted.text;
    EXPECT_EQ(box.getChannel(), std::to_string(wanted.selected)) << wanted.text;
  }
}

template <typename Error>
std::string messageOf(APCredentials& box, const std::string& channel) {
  try {
    box.setChannel(channel);
  } catch (const Error& error) {
    return error.what();
  }
  return "nothing was thrown";
}

TEST_F(WifiPage, ChannelThatIsNoIntRaisesAndLeavesTheSelection) {
  APCredentials box(config);
  box.setChannel("9");
  for (const char* text : {"abc", "-", "+ 5", ";", "\xff"})
    EXPECT_NE(messageOf<std::invalid_argument>(box, text).find("stoi"), std::string::npos) << text;
  for (const char* text : {"99999999999", "2147483648", "-2147483649"})
    EXPECT_NE(messageOf<std::out_of_range>(box, text).find("stoi"), std::string::npos) << text;
  EXPECT_EQ(box.getChannel(), "9");
}

TEST_F(WifiPage, ChannelIsAutomaticWithoutASelection) {
  APCredentials box(config);
  widgetOf<Gtk::DropDown>(box).set_selected(GTK_INVALID_LIST_POSITION);
  EXPECT_EQ(box.getChannel(), "0");
}

TEST_F(WifiPage, ListOfChannelsThatIsClosedAtOnceLeavesNothingToDo) {
  APCredentials box(config);
  Gtk::Window window;
  window.set_child(box);
  window.present();
  ASSERT_TRUE(eventually([&] { return window.get_width() > 0; }));
  auto& button = widgetOf<Gtk::ToggleButton>(box);
  button.set_active(true);
  button.set_active(false);
  using Clock = std::chrono::steady_clock;
  Clock::time_point lastFrame = Clock::now();
  window.get_frame_clock()->signal_update().connect([&] { lastFrame = Clock::now(); });
  EXPECT_TRUE(
      eventually([&] { return Clock::now() - lastFrame > std::chrono::milliseconds(300); }));
}

// ---- The address pool

TEST_F(WifiPage, DhcpBoxShowsInsensitiveControlsOnly) {
  DHCPBox box;
  EXPECT_EQ(describe(box), R"(Box vertical margin=5
  Label "Enable DHCP" margins=5,0,5,0
  Frame margin=5
    Grid equal-columns equal-rows margin=5
      (0,0,1,1) CheckButton "Yes" active halign=center valign=center insensitive
      (2,0,1,1) CheckButton "No" halign=center valign=center insensitive
  Label "DHCP Pool"
  Grid
    (0,0,1,1) Label "Start IP"
    (1,0,1,1) Entry "" insensitive
    (2,0,1,1) Label "End IP"
    (3,0,1,1) Entry "" insensitive
)");
  labelled<Gtk::CheckButton>(box, "No").set_active(true);
  EXPECT_FALSE(labelled<Gtk::CheckButton>(box, "Yes").get_active());
}

// ---- The page

TEST_F(WifiPage, GridPlacesItsBoxesAndLeavesColumnZeroEmpty) {
  wifiKeyfile("[wifi]\nmode=ap\n");
  WifiGrid grid(config);
  EXPECT_EQ(describe(grid, 1), R"(Grid hexpand vexpand valign=start margin=5
  (1,0,3,1) Box vertical hexpand vexpand
  (1,1,3,1) Box vertical hexpand vexpand
  (1,2,3,1) Box horizontal
  (1,3,2,1) Label "Below info is only for access points"
  (1,4,3,2) Box horizontal
  (1,6,3,1) Box vertical hexpand vexpand margin=5 hidden
)");
  EXPECT_EQ(grid.get_child_at(1, 0), &grid.getDeviceBox());
  EXPECT_EQ(grid.get_child_at(1, 1), &grid.getModeBox());
  EXPECT_EQ(grid.get_child_at(1, 2), &grid.getCredentials());
  EXPECT_EQ(grid.get_child_at(1, 4), &grid.getAPCredentials());
  EXPECT_NE(dynamic_cast<DHCPBox*>(grid.get_child_at(1, 6)), nullptr);
}

TEST_F(WifiPage, GridPrintsTheKeyfileAndNothingElse) {
  wifiKeyfile("[wifi]\nmode=ap\n");
  EXPECT_EQ(printedBy([&] { WifiGrid grid(config); }),
            "Wifi Path: " + directory.file("wireless") + "\n");
}

TEST_F(WifiPage, AccessPointsPartFollowsTheModeFromTheStart) {
  for (const std::string stored : {"ap", "infrastructure", "disabled", "mesh"}) {
    wifiKeyfile("[wifi]\nmode=" + stored + "\n");
    WifiGrid grid(config);
    const auto expectAccessPoint = [&](bool shown) {
      EXPECT_EQ(grid.getAPCredentials().get_visible(), shown) << stored;
      EXPECT_EQ(labelled<Gtk::Label>(grid, "Below info is only for access points").get_visible(),
                shown);
      EXPECT_FALSE(widgetOf<DHCPBox>(grid).get_visible());
    };
    expectAccessPoint(stored == "ap");
    for (const std::string mode : {"Access Point", "Disabled", "Access Point", "Client"}) {
      labelled<Gtk::CheckButton>(grid, mode).set_active(true);
      expectAccessPoint(mode == "Access Point");
    }
  }
}

}  // namespace

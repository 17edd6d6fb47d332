// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "window_test.h"

namespace {

class Construction : public WindowTest {};

TEST_F(Construction, PrintsNothingWhenTheWindowGoes) {
  for (const int page : {ETHERNET, WIFI}) {
    open(STATIC_KEYFILE, AP_KEYFILE, page);
    EXPECT_EQ(printedBy([this] { window.reset(); }), "");
  }
}

// ---- The window

TEST_F(Construction, StacksTheNotebookAndTheTwoButtons) {
  open();
  EXPECT_EQ(describe(*window->get_child()), R"(Box vertical spacing=1 margin=5
  Notebook tabs=top hexpand vexpand margin=5
    page "Ethernet"
    page "Wifi"
  Box horizontal spacing=50 halign=center
    Button "Save And Exit" no-hexpand halign=center
    Button "Exit Without Saving" no-hexpand halign=center
)");
  EXPECT_EQ(notebook().get_nth_page(ETHERNET), &widgetOf<EthernetGrid>(*window));
  EXPECT_EQ(notebook().get_nth_page(WIFI), &widgetOf<WifiGrid>(*window));
  EXPECT_EQ(widgetOf<EthernetGrid>(*window).get_margin_start(), 5);
  EXPECT_TRUE(widgetOf<EthernetGrid>(*window).get_visible());
}

TEST_F(Construction, HasATitleAFixedSizeAndTheEthernetPageInFront) {
  open();
  EXPECT_EQ(window->get_title().raw(), "ZOR Network Manager");
  EXPECT_FALSE(window->get_resizable());
  EXPECT_EQ(notebook().get_current_page(), ETHERNET);
  EXPECT_FALSE(window->get_visible());
}

TEST_F(Construction, SizesTheWindowForTheEthernetMode) {
  open("", AP_KEYFILE, ETHERNET);
  EXPECT_EQ(defaultSize(), std::pair(525, 425));
  open(DYNAMIC_KEYFILE, AP_KEYFILE, ETHERNET);
  EXPECT_EQ(defaultSize(), std::pair(525, 425));
  open(STATIC_KEYFILE, AP_KEYFILE, ETHERNET);
  EXPECT_EQ(defaultSize(), std::pair(525, 475));
}

// ---- The Ethernet page

TEST_F(Construction, TakesTheEthernetModeFromTheKeyfile) {
  const struct {
    std::string method;
    std::string button;
    std::string error;
  } cases[] = {
      {"method=manual", "Static IP", ""},
      {"method= manual ", "Static IP", ""},
      {"method=\"manual \"", "Static IP", ""},
      {"method=auto", "Dynamic IP", ""},
      {"method=Manual", "Dynamic IP", "! Unrecognized Ethernet mode 'Manual'; "},
      {"method=disabled", "Dynamic IP", "! Unrecognized Ethernet mode 'disabled'; "},
      {"method=", "Dynamic IP", "! Unrecognized Ethernet mode ''; "},
      {"may-fail=true", "Dynamic IP", "! Unrecognized Ethernet mode ''; "},
      {"method=\xff\xc3", "Dynamic IP", "! Unrecognized Ethernet mode '\xff\xc3'; "},
  };
  for (const auto& wanted : cases) {
    writeBytes(directory.file("a"),
               "[connection]\ntype=ethernet\n[ipv4]\n" + wanted.method + "\naddress1=/,\n");
    const std::string printed = open();
    EXPECT_EQ(ethernetMode(), wanted.button) << wanted.method;
    if (wanted.error.empty()) {
      const std::string mode = wanted.button == "Static IP" ? "manual" : "auto";
      EXPECT_NE(printed.find("Retrieved mode: " + mode + "\n"), std::string::npos) << printed;
      EXPECT_EQ(printed.find("Unrecognized"), std::string::npos) << printed;
    } else {
      EXPECT_NE(printed.find(wanted.error + "defaulting to dynamic (auto).\n"), std::string::npos)
          << printed;
    }
  }
}

TEST_F(Construction, FillsTheStaticEntriesFromTheKeyfile) {
  using Texts = std::vector<std::string>;
  const std::string tooLong = "192.168.1.10/24," + std::string(98, '1');
  const std::string populated = "Populated Ethernet settings successfully.\n";
  const auto readAndPopulated = [&](const std::string& stored) {
    return "Read fullEthernetAddress: " + stored + "\n" + populated;
  };
  const struct {
    std::string stored;
    Texts shown;
    std::string printed;  // behind all that does not depend on the address
  } cases[] = {
      {"address1=192.168.1.10/24,192.168.1.1\ndns=8.8.8.8;8.8.4.4;",
       {"192.168.1.10", "255.255.255.0", "192.168.1.1", "8.8.8.8"},
       readAndPopulated("192.168.1.10/24,192.168.1.1")},
      {"address1=10.0.0.2/8,\ndns=",
       {"10.0.0.2", "255.0.0.0", "", ""},
       readAndPopulated("10.0.0.2/8,")},
      {"address1=192.168.1.10/24\ndns=1.1.1.1, 9.9.9.9",
       {"", "", "", "1.1.1.1"},
       readAndPopulated("192.168.1.10/24") +
           "! Invalid Ethernet address format: 192.168.1.10/24\n"},
      {"address1=1.2.3.4/33,1.2.3.1",
       {"", "", "", ""},
       readAndPopulated("1.2.3.4/33,1.2.3.1") +
           "! Invalid CIDR prefix in ethernet address: 1.2.3.4/33,1.2.3.1\n"},
      {"dns=8.8.8.8",
       {"", "", "", ""},
       "! Error: No Ethernet address information found in the configuration file.\n"},
      {"address1=" + tooLong,
       {"192.168.1.10", "255.255.255.0", std::string(83, '1'), ""},
       readAndPopulated(tooLong.substr(0, 99))},
      {"address1=\xff/24,\xc3\xa9\xc3\ndns=\xfe",
       {"\uFFFD", "255.255.255.0", "\u00E9\uFFFD", "\uFFFD"},
       readAndPopulated("\xff/24,\xc3\xa9\xc3")},
  };
  for (const auto& wanted : cases) {
    writeBytes(directory.file("a"),
               "[connection]\ntype=ethernet\n[ipv4]\nmethod=manual\n" + wanted.stored + "\n");
    const std::string printed = open();
    const std::string before = "Ethernet mode matches static.\n";
    const auto end = printed.find(before);
    ASSERT_NE(end, std::string::npos) << printed;
    EXPECT_EQ(printed.substr(end + before.size()), wanted.printed);
    EXPECT_EQ(ethernetTexts(), wanted.shown) << wanted.stored;
    EXPECT_TRUE(widgetOf<EthernetCredentialsBox>(*window).get_visible());
  }
}

TEST_F(Construction, LeavesTheEntriesEmptyForADynamicAddress) {
  writeBytes(directory.file("a"),
             std::string(DYNAMIC_KEYFILE) + "address1=1.2.3.4/24,1.2.3.1\ndns=8.8.8.8\n");
  open();
  EXPECT_EQ(ethernetTexts(), (std::vector<std::string>{"", "", "", ""}));
  EXPECT_FALSE(widgetOf<EthernetCredentialsBox>(*window).get_visible());
}

// ---- The Wi-Fi page

TEST_F(Construction, FillsTheAccessPointFromTheKeyfile) {
  const struct {
    std::string stored;
    std::string ipAddress;
    std::string mask;
    guint channel;
    std::string error;
  } cases[] = {
      {"[wifi]\nband=bg\nchannel=6\n[ipv4]\naddress1=10.42.0.1/24,10.42.0.1\n", "10.42.0.1",
       "255.255.255.0", 6, ""},
      {"[wifi]\nband=bg\n[ipv4]\naddress1=10.42.0.1/8,x\n", "10.42.0.1", "255.0.0.0", 0, ""},
      {"[wifi]\nband=\" bg \"\nchannel=11\n[ipv4]\naddress1=1.1.1.1/0,\n", "1.1.1.1", "0.0.0.0", 11,
       ""},
      {"[wifi]\nband=a\nchannel=36\n", "", "", 0, "! Invalid Format\n"},
      {"[wifi]\nband=a\nchannel=6\n", "", "", 0, "! Invalid Format\n"},
      {"[wifi]\nchannel=6\n[ipv4]\naddress1=1.1.1.1/24\n", "", "", 0, "! Invalid Format\n"},
      {"[wifi]\nband=BG\nchannel=6\n", "", "", 0, "! Invalid Format\n"},
      {"[wifi]\nband=bg\nchannel=13\n[ipv4]\naddress1=1.1.1.1/x,1.1.1.1\n", "", "", 0,
       "! Invalid CIDR prefix in address: 1.1.1.1/x,1.1.1.1\n"},
      {"[wifi]\nband=bg\nchannel=abc\n[ipv4]\naddress1=1.1.1.1/24,1.1.1.1\n", "1.1.1.1",
       "255.255.255.0", 0, ""},
      {"[wifi]\nband=bg\nchannel=99999999999\n[ipv4]\naddress1=1.1.1.1/24,1.1.1.1\n", "1.1.1.1",
       "255.255.255.0", 0, ""},
      {"[wifi]\nband=bg\nchannel=\xff\n[ipv4]\naddress1=\xff/24,\n", "\uFFFD", "255.255.255.0", 0,
       ""},
  };
  for (const auto& wanted : cases) {
    std::string content = "[connection]\ntype=wifi\n" + wanted.stored;
    content.insert(content.find("[wifi]\n") + 7, "mode=ap\n");
    writeBytes(directory.file("a"), DYNAMIC_KEYFILE);
    writeBytes(directory.file("b"), content);
    const std::string printed = open();
    EXPECT_EQ(apEntry("IP Address").get_text().raw(), wanted.ipAddress) << wanted.stored;
    EXPECT_EQ(apEntry("Subnet Mask").get_text().raw(), wanted.mask) << wanted.stored;
    EXPECT_EQ(channel().get_selected(), wanted.channel) << wanted.stored;
    const auto errors = printed.find("! ");
    EXPECT_EQ(errors == std::string::npos ? "" : printed.substr(errors), wanted.error);
    EXPECT_EQ(wifiMode(), "Access Point");
  }
}

TEST_F(Construction, FillsTheAccessPointBeforeTheEthernetPage) {
  writeBytes(directory.file("a"), "[connection]\ntype=ethernet\n[ipv4]\nmethod=link-local\n");
  writeBytes(directory.file("b"), "[connection]\ntype=wifi\n[wifi]\nmode=ap\n");
  EXPECT_TRUE(open().ends_with(
      "! Invalid Format\n"
      "! Unrecognized Ethernet mode 'link-local'; defaulting to dynamic (auto).\n"));
}

TEST_F(Construction, LeavesTheAccessPointEmptyInOtherModes) {
  for (const std::string mode : {"infrastructure", "disabled", "mesh"}) {
    writeBytes(directory.file("b"), "[connection]\ntype=wifi\n[wifi]\nband=bg\nchannel=6\nmode=" +
                                        mode + "\n[ipv4]\naddress1=10.42.0.1/24,10.42.0.1\n");
    open();
    EXPECT_EQ(apEntry("IP Address").get_text().raw(), "") << mode;
    EXPECT_EQ(apEntry("Subnet Mask").get_text().raw(), "") << mode;
    EXPECT_EQ(channel().get_selected(), 0U) << mode;
  }
}

TEST_F(Construction, ReadsModeNameAndPasswordOfTheWifiKeyfile) {
  writeBytes(directory.file("b"), CLIENT_KEYFILE);
  open();
  EXPECT_EQ(wifiMode(), "Client");
  EXPECT_EQ(credentialEntry("SSID").get_text().raw(), "Home");
  EXPECT_EQ(credentialEntry("Password").get_text().raw(), "password2");
}

TEST_F(Construction, SurvivesKeyfilesOfAnyBytes) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  for (const char* key :
       {"interface-name", "method", "address1", "dns", "mode", "ssid", "psk", "band", "channel"}) {
    const std::string odd =
        std::string(key) + "=" + all + "\n" + key + "=" + all.substr(128) + "\n";
    writeBytes(directory.file("a"),
               "[connection]\ntype=ethernet\n" + odd + "[ipv4]\n" + odd + "method=manual\n" + odd);
    writeBytes(directory.file("b"), "[connection]\ntype=wifi\n" + odd + "[wifi]\n" + odd +
                                        "mode=ap\nband=bg\n" + odd + "[wifi-security]\n" + odd +
                                        "[ipv4]\n" + odd);
    open();
    showPage(WIFI);
    EXPECT_EQ(channel().get_selected(), 0U) << key;
  }
}

}  // namespace

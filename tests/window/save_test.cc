// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "window_test.h"

namespace {

constexpr const char* STATIC_ON_DEFAULT =
    "[connection]\nid=ethernet\ntype=ethernet\nautoconnect-priority=-999\ninterface-name=eth0\n\n"
    "autoconnect=true\n[ethernet]\n\n"
    "[ipv4]\nmethod=manual\n\naddress1=192.168.1.10/24,192.168.1.1\ndns=8.8.8.8\n"
    "[ipv6]\naddr-gen-mode=stable-privacy\nmethod=auto\n\n[proxy]\n";
constexpr const char* DYNAMIC_ON_DEFAULT =
    "[connection]\nid=ethernet\ntype=ethernet\nautoconnect-priority=-999\ninterface-name=eth0\n\n"
    "autoconnect=true\n[ethernet]\n\n[ipv4]\nmethod=auto\n\n"
    "[ipv6]\naddr-gen-mode=stable-privacy\nmethod=auto\n\n[proxy]\n";
constexpr const char* AP_ON_DEFAULT =
    "[connection]\nid=Hotspot\ntype=wifi\ninterface-name=wlan0\nautoconnect=true\n"
    "[wifi]\nssid=My Net\nmode=ap\nband=bg\nchannel=11\n"
    "[ipv4]\nmethod=shared\naddress1=192.168.4.20/24,192.168.4.1\n[proxy]\n"
    "[wifi-security]\ngroup=ccmp;\nkey-mgmt=wpa-psk\npairwise=ccmp;\nproto=rsn;\npsk=pass word\n"
    "[ipv6]\naddr-gen-mode=stable-privacy\nmethod=ignore\n";
constexpr const char* CLIENT_ON_DEFAULT =
    "[connection]\nid=ZOR\ntype=wifi\ninterface-name=wlan0\nautoconnect=true\n"
    "permissions=user:zor:;\n[wifi]\nssid=My Net\nmode=infrastructure\n[ipv4]\nmethod=auto\n"
    "[proxy]\n[wifi-security]\nauth-alg=open\nkey-mgmt=wpa-psk\npsk=p\n"
    "[ipv6]\naddr-gen-mode=stable-privacy\nmethod=auto\n";

const std::string RECORD_WRITTEN = "File created at /tmp/ethernetUpdateSettings\n";
const std::string DYNAMIC_RECORD = "01 00 00 00 00 00 00 00 00 00 00 00 00 ";

class Save : public WindowTest {
 protected:
  static mode_t modeOf(const std::string& file) {
    struct stat status {};
    stat(file.c_str(), &status);
    return status.st_mode & 07777;
  }

  /** Where the start of the privileged program stands in relation to the hiding of the window. */
  std::string orderOfSave() {
    std::string order;
    window->signal_hide().connect([&] { order = hasChild() ? "request, hide" : "hide"; });
    save();
    return order == "hide" && !recorder.requests().empty() ? "hide, request" : order;
  }

  void expectNotSaved() {
    EXPECT_TRUE(window->get_visible());
    EXPECT_EQ(recorder.requests(), "");
  }
  void expectSaved(const std::string& request) {
    EXPECT_FALSE(window->get_visible());
    EXPECT_EQ(recorder.requests(), request);
  }
};

// ---- Ethernet

class SaveEthernet : public Save {
 protected:
  void fillStatic() { fillEthernet("192.168.1.10", "255.255.255.0", "192.168.1.1", " 8.8.8.8 "); }

  static std::string validStatic() {
    return lines({"Ethernet IP Address being validated: 192.168.1.10",
                  "Ethernet Subnet Mask being validated: 255.255.255.0",
                  "Ethernet Gateway being validated: 192.168.1.1",
                  "Ethernet DNS Server being validated:  8.8.8.8 "}) +
           checked("192.168.1.10", "Valid") + checked("192.168.1.1", "Valid") +
           checked("8.8.8.8", "Valid") + "Valid Ethernet IP, Subnet, Gateway, and Subnet Mask\n";
  }

  UpdateRecordLock lock;
};

TEST_F(SaveEthernet, StaticAfterDynamicStartsFromADefaultFile) {
  open(DYNAMIC_KEYFILE, "", ETHERNET);
  choose("Static IP");
  fillStatic();
  EXPECT_EQ(save(),
            "existing ethernet mode: auto selected mode: manual\n"
            "New Ethernet connection file created at: " +
                ethernetFile() + "\n" + validStatic() + RECORD_WRITTEN);
  EXPECT_EQ(readBytes(ethernetFile()), STATIC_ON_DEFAULT);
  EXPECT_EQ(readBytes(UpdateRecordLock::PATH), "00 C0 A8 01 0A FF FF FF 00 C0 A8 01 01 ");
  EXPECT_EQ(modeOf(ethernetFile()), 0600U);
  expectSaved("[finalize_ethernet][ethernet]");
}

TEST_F(SaveEthernet, DynamicAfterStaticStartsFromADefaultFile) {
  writeBytes(directory.file("old"), STATIC_KEYFILE);
  open();
  window->show();
  choose("Dynamic IP");
  EXPECT_EQ(save(),
            "existing ethernet mode: manual selected mode: auto\n"
            "New Ethernet connection file created at: " +
                ethernetFile() + "\n" + RECORD_WRITTEN);
  EXPECT_FALSE(exists(directory.file("old")));
  EXPECT_EQ(readBytes(ethernetFile()), DYNAMIC_ON_DEFAULT);
  EXPECT_EQ(readBytes(UpdateRecordLock::PATH), DYNAMIC_RECORD);
  expectSaved("[finalize_ethernet][ethernet]");
}

TEST_F(SaveEthernet, WithoutAKeyfileStartsFromADefaultFile) {
  open();
  window->show();
  EXPECT_EQ(save(),
            "existing ethernet mode:  selected mode: auto\n"
            "New Ethernet connection file created at: " +
                ethernetFile() + "\n" + RECORD_WRITTEN);
  EXPECT_EQ(readBytes(ethernetFile()), DYNAMIC_ON_DEFAULT);
  expectSaved("[finalize_ethernet][ethernet]");
}

TEST_F(SaveEthernet, SameModeKeepsTheFileAndWhatElseItHolds) {
  writeBytes(directory.file("wired"),
             "; note\r\n[connection]\r\ntype=ethernet\r\nuuid=1\r\n[ipv4]\r\nmethod=auto\r\n"
             "address1=9.9.9.9/24,9.9.9.1\r\ndns=9.9.9.2\r\n[more]\r\nproto=\"a;b\"");
  open();
  window->show();
  EXPECT_EQ(save(), "existing ethernet mode: auto selected mode: auto\n" + RECORD_WRITTEN);
  EXPECT_EQ(readBytes(directory.file("wired")),
            "; note\r\n[connection]\r\ntype=ethernet\r\nuuid=1\r\nid=ethernet\n"
            "autoconnect-priority=-999\nautoconnect=true\ninterface-name=eth0\n"
            "[ipv4]\r\nmethod=auto\r\naddress1=9.9.9.9/24,9.9.9.1\r\ndns=9.9.9.2\r\n"
            "[more]\r\nproto=a;b\n[ipv6]\naddr-gen-mode=stable-privacy\nmethod=auto\n");
  EXPECT_FALSE(exists(ethernetFile()));
  expectSaved("[finalize_ethernet][ethernet]");
}

TEST_F(SaveEthernet, StaticAgainGivesTheSameFile) {
  open(STATIC_ON_DEFAULT, "", ETHERNET);
  ASSERT_EQ(ethernetMode(), "Static IP");
  save();
  EXPECT_EQ(readBytes(ethernetFile()), STATIC_ON_DEFAULT);
  expectSaved("[finalize_ethernet][ethernet]");
}

TEST_F(SaveEthernet, RecordMayBeReadAsTheUmaskSays) {
  open(DYNAMIC_KEYFILE, "", ETHERNET);
  const mode_t umaskBefore = umask(0027);
  save();
  umask(umaskBefore);
  EXPECT_EQ(modeOf(UpdateRecordLock::PATH), 0640U);
}

TEST_F(SaveEthernet, HidesBeforeTheRequest) {
  open(DYNAMIC_KEYFILE, "", ETHERNET);
  EXPECT_EQ(orderOfSave(), "hide, request");
}

TEST_F(SaveEthernet, DynamicIgnoresTheStaticEntries) {
  open(DYNAMIC_KEYFILE, "", ETHERNET);
  fillEthernet("x", "\u20AC", "", "...");
  EXPECT_EQ(save(), "existing ethernet mode: auto selected mode: auto\n" + RECORD_WRITTEN);
  EXPECT_TRUE(dialogs().empty());
  EXPECT_EQ(readBytes(UpdateRecordLock::PATH), DYNAMIC_RECORD);
  expectSaved("[finalize_ethernet][ethernet]");
}

TEST_F(SaveEthernet, InvalidEntriesStopItBeforeAnythingIsWritten) {
  open(STATIC_KEYFILE, "", ETHERNET);
  ethernetEntry("Default Gateway").set_text("");
  const std::string printed = save();
  const std::string end = "! Invalid format for IP Address or Subnet Mask\n";
  EXPECT_EQ(printed.substr(printed.size() - end.size()), end);
  EXPECT_EQ(readBytes(ethernetFile()), STATIC_KEYFILE);
  EXPECT_FALSE(exists(UpdateRecordLock::PATH));
  expectNotSaved();

  ASSERT_EQ(dialogs().size(), 1U);
  dialogs()[0]->response(Gtk::ResponseType::OK);
  ethernetEntry("Default Gateway").set_text("192.168.1.1");
  save();
  expectSaved("[finalize_ethernet][ethernet]");
}

TEST_F(SaveEthernet, InvalidEntriesAfterAModeChangeLeaveTheDefaultFile) {
  writeBytes(directory.file("old"), DYNAMIC_KEYFILE);
  open();
  window->show();
  choose("Static IP");
  save();
  EXPECT_FALSE(exists(directory.file("old")));
  EXPECT_NE(readBytes(ethernetFile()).find("id=new_ethernet_connection\n"), std::string::npos);
  EXPECT_FALSE(exists(UpdateRecordLock::PATH));
  expectNotSaved();
}

TEST_F(SaveEthernet, ModeOfTheOtherPageIsRefused) {
  open(STATIC_KEYFILE, "", ETHERNET);
  choose("Client");
  EXPECT_EQ(save(), "! Unexpected Ethernet mode: infrastructure\n");
  EXPECT_EQ(readBytes(ethernetFile()), STATIC_KEYFILE);
  EXPECT_FALSE(exists(UpdateRecordLock::PATH));
  expectNotSaved();
}

// ---- Ethernet, when files cannot be written

TEST_F(SaveEthernet, MissingDirectoryGivesARequestWithoutAnId) {
  open(DYNAMIC_KEYFILE, "", ETHERNET);
  std::filesystem::remove_all(directory.path);
  EXPECT_EQ(save(), "existing ethernet mode:  selected mode: auto\n" + RECORD_WRITTEN +
                        "! Failed to create new Wi-Fi connection file at: " + ethernetFile() +
                        "\n");
  EXPECT_EQ(readBytes(UpdateRecordLock::PATH), DYNAMIC_RECORD);
  expectSaved("[finalize_ethernet]");
}

TEST_F(SaveEthernet, RecordThatCannotBeWrittenDoesNotStopIt) {
  mkdir(UpdateRecordLock::PATH, 0700);
  open(DYNAMIC_KEYFILE, "", ETHERNET);
  EXPECT_EQ(save(), lines({"existing ethernet mode: auto selected mode: auto",
                           "! Error: Unable to create the file."}));
  expectSaved("[finalize_ethernet][ethernet]");
}

TEST_F(SaveEthernet, DirectoryOrFifoInTheDefaultFilesPlaceDoesNotStopIt) {
  const auto makeDirectory = [](const std::string& name) {
    mkdir(name.c_str(), 0700);
    writeBytes(name + "/content", "");
  };
  const auto makeFifo = [](const std::string& name) { mkfifo(name.c_str(), 0600); };
  for (const std::function<void(const std::string&)>& make :
       {std::function<void(const std::string&)>(makeDirectory),
        std::function<void(const std::string&)>(makeFifo)}) {
    std::filesystem::remove_all(ethernetFile());
    make(ethernetFile());
    open();
    window->show();
    EXPECT_EQ(save(), "existing ethernet mode:  selected mode: auto\n" + RECORD_WRITTEN +
                          "! Failed to create new Wi-Fi connection file at: " + ethernetFile() +
                          "\n");
    EXPECT_FALSE(window->get_visible());
    EXPECT_EQ(recorder.requests().substr(0, 19), "[finalize_ethernet]");
  }
}

TEST_F(SaveEthernet, ReadOnlyFolderAndKeyfileStayAsTheyAre) {
  open(DYNAMIC_KEYFILE, "", ETHERNET);
  chmod(ethernetFile().c_str(), 0444);
  chmod(directory.path.c_str(), 0555);
  std::string printed;
  {
    const Unprivileged user;
    printed = save();
  }
  EXPECT_EQ(printed, "existing ethernet mode: auto selected mode: auto\n" + RECORD_WRITTEN);
  EXPECT_EQ(readBytes(ethernetFile()), DYNAMIC_KEYFILE);
  expectSaved("[finalize_ethernet][wired]");
  chmod(directory.path.c_str(), 0755);
}

TEST_F(SaveEthernet, ReadOnlyFolderAfterAModeChangeReportsTheDefaultFile) {
  open(STATIC_KEYFILE, "", ETHERNET);
  choose("Dynamic IP");
  chmod(ethernetFile().c_str(), 0444);
  chmod(directory.path.c_str(), 0555);
  std::string printed;
  {
    const Unprivileged user;
    printed = save();
  }
  EXPECT_EQ(printed, "existing ethernet mode: manual selected mode: auto\n" + RECORD_WRITTEN +
                         "! Failed to create new Wi-Fi connection file at: " + ethernetFile() +
                         "\n");
  EXPECT_EQ(readBytes(ethernetFile()), STATIC_KEYFILE);
  expectSaved("[finalize_ethernet][wired]");
  chmod(directory.path.c_str(), 0755);
}

TEST_F(SaveEthernet, WithoutThePrivilegedProgramTheWindowGoesAllTheSame) {
  std::filesystem::remove(recorder.program());
  open(DYNAMIC_KEYFILE, "", ETHERNET);
  EXPECT_EQ(save(), "existing ethernet mode: auto selected mode: auto\n" + RECORD_WRITTEN +
                        "! Failed to execute zor-network-permissions-handler: "
                        "No such file or directory\n");
  expectSaved("");
}

// ---- Wi-Fi

class SaveWifi : public Save {};

TEST_F(SaveWifi, AccessPointWithoutAKeyfileStartsFromADefaultFile) {
  open("", "", WIFI);
  choose("Access Point");
  fillWifi("My Net", "pass word");
  fillAccessPoint(" 192.168.4.20 ", "255.255.255.0", 11);
  EXPECT_EQ(save(), lines({"existing wifi mode:  selected mode: ap",
                           "New Wi-Fi connection file created at: " + wifiFile(),
                           "IP Address being validated:  192.168.4.20 ",
                           "Subnet Mask being validated: 255.255.255.0",
                           "Wifi Password being validated: pass word"}) +
                        checked("192.168.4.20", "Valid") +
                        lines({"Valid IP, Subnet, and password", "Wifi Device name: wlan0"}) +
                        checked("192.168.4.20", "Valid"));
  EXPECT_EQ(readBytes(wifiFile()), AP_ON_DEFAULT);
  EXPECT_EQ(modeOf(wifiFile()), 0600U);
  expectSaved("[finalize_wifi][Hotspot]");
}

TEST_F(SaveWifi, ClientAfterAccessPointStartsFromADefaultFile) {
  writeBytes(directory.file("old"), AP_KEYFILE);
  open();
  window->show();
  showPage(WIFI);
  choose("Client");
  fillWifi("My Net", "p");
  EXPECT_EQ(save(), lines({"existing wifi mode: ap selected mode: infrastructure",
                           "New Wi-Fi connection file created at: " + wifiFile(),
                           "Wifi Device name: wlan1"}));
  EXPECT_FALSE(exists(directory.file("old")));
  std::string wanted = CLIENT_ON_DEFAULT;
  wanted.replace(wanted.find("wlan0"), 5, "wlan1");  // the name that the page shows
  EXPECT_EQ(readBytes(wifiFile()), wanted);
  expectSaved("[finalize_wifi][ZOR]");
}

TEST_F(SaveWifi, AccessPointAfterClientStartsFromADefaultFile) {
  open("", CLIENT_ON_DEFAULT, WIFI);
  choose("Access Point");
  fillWifi("My Net", "pass word");
  fillAccessPoint("192.168.4.20", "255.255.255.0", 11);
  save();
  EXPECT_EQ(readBytes(wifiFile()), AP_ON_DEFAULT);
  expectSaved("[finalize_wifi][Hotspot]");
}

TEST_F(SaveWifi, SameModeGivesTheSameFile) {
  open("", AP_ON_DEFAULT, WIFI);
  ASSERT_EQ(wifiMode(), "Access Point");
  save();
  EXPECT_EQ(readBytes(wifiFile()), AP_ON_DEFAULT);
  expectSaved("[finalize_wifi][Hotspot]");

  open("", CLIENT_ON_DEFAULT, WIFI);
  EXPECT_EQ(save(), lines({"existing wifi mode: infrastructure selected mode: infrastructure",
                           "Wifi Device name: wlan0"}));
  EXPECT_EQ(readBytes(wifiFile()), CLIENT_ON_DEFAULT);
  expectSaved("[finalize_wifi][ZOR]");
}

TEST_F(SaveWifi, RequestComesBeforeHiding) {
  for (const std::string mode : {"Client", "Access Point", "Disabled"}) {
    open("", AP_ON_DEFAULT, WIFI);
    choose(mode);
    EXPECT_EQ(orderOfSave(), "request, hide") << mode;
    EXPECT_NE(recorder.requests(), "");
  }
}

TEST_F(SaveWifi, ClientIsNotValidatedAndWrittenAsTyped) {
  const struct {
    std::string ssid;
    std::string password;
    std::string lines;
  } cases[] = {
      {"", "", "ssid=\n|psk=\n"},
      {" a ", "\u00E9\u20AC", "ssid=\" a \"\n|psk=\u00E9\u20AC\n"},
      {"a;b", "#1\"", "ssid=\"a;b\"\n|psk=\"#1\\\"\"\n"},
      {"group=a;b", "proto=#", "ssid=group=a;b\n|psk=proto=#\n"},
  };
  for (const auto& wanted : cases) {
    open("", CLIENT_ON_DEFAULT, WIFI);
    fillWifi(wanted.ssid, wanted.password);
    fillAccessPoint("x", "y", 0);
    save();
    expectSaved("[finalize_wifi][ZOR]");
    const auto middle = wanted.lines.find('|');
    const std::string written = readBytes(wifiFile());
    EXPECT_NE(written.find("\n" + wanted.lines.substr(0, middle)), std::string::npos) << written;
    EXPECT_NE(written.find("\n" + wanted.lines.substr(middle + 1)), std::string::npos) << written;
    EXPECT_TRUE(dialogs().empty());
  }
}

TEST_F(SaveWifi, InvalidAccessPointStopsItBeforeAnythingIsWritten) {
  open("", AP_KEYFILE, WIFI);
  fillWifi("Net", "short");
  EXPECT_EQ(save(), lines({"existing wifi mode: ap selected mode: ap",
                           "IP Address being validated: 10.42.0.5",
                           "Subnet Mask being validated: 255.255.255.0",
                           "Wifi Password being validated: short"}) +
                        checked("10.42.0.5", "Valid") +
                        "! Invalid format for IP Address or Subnet Mask, or invalid wifi mode\n");
  EXPECT_EQ(readBytes(wifiFile()), AP_KEYFILE);
  expectNotSaved();
}

TEST_F(SaveWifi, InvalidAccessPointAfterAModeChangeLeavesTheDefaultFile) {
  writeBytes(directory.file("old"), CLIENT_KEYFILE);
  open();
  window->show();
  showPage(WIFI);
  choose("Access Point");
  save();
  EXPECT_FALSE(exists(directory.file("old")));
  EXPECT_NE(readBytes(wifiFile()).find("id=new_wifi_connection\n"), std::string::npos);
  expectNotSaved();
}

TEST_F(SaveWifi, DisabledRemovesTheKeyfile) {
  open("", AP_KEYFILE, WIFI);
  choose("Disabled");
  fillWifi("typed", "typed");
  EXPECT_EQ(save(), lines({"Resetting Wifi Credentials",
                           "Removing existing Wi-Fi settings file at " + wifiFile(),
                           "Resetting Wifi Credentials"}));
  EXPECT_FALSE(exists(wifiFile()));
  EXPECT_EQ(credentialEntry("SSID").get_text().raw(), "Net");
  expectSaved("[finalize_wifi]");
}

TEST_F(SaveWifi, DisabledWithoutAKeyfileAsksAllTheSame) {
  open("", "", WIFI);
  EXPECT_EQ(save(),
            lines({"Resetting Wifi Credentials", "Removing existing Wi-Fi settings file at ",
                   "Resetting Wifi Credentials"}));
  expectSaved("[finalize_wifi]");
}

TEST_F(SaveWifi, ModeOfTheOtherPageIsRefused) {
  open("", AP_KEYFILE, WIFI);
  choose("Static IP");
  EXPECT_EQ(save(), "! Unexpected Wi-Fi mode: manual\n");
  EXPECT_EQ(readBytes(wifiFile()), AP_KEYFILE);
  expectNotSaved();
}

TEST_F(SaveWifi, MissingDirectoryGivesARequestWithoutAnId) {
  open("", CLIENT_KEYFILE, WIFI);
  std::filesystem::remove_all(directory.path);
  EXPECT_EQ(save(),
            lines({"existing wifi mode:  selected mode: infrastructure", "Wifi Device name: wlan0",
                   "! Failed to create new Wi-Fi connection file at: " + wifiFile()}));
  expectSaved("[finalize_wifi]");
}

TEST_F(SaveWifi, FifoInTheDefaultFilesPlaceDoesNotStopIt) {
  mkfifo(wifiFile().c_str(), 0600);
  writeBytes(directory.file("wireless"), CLIENT_KEYFILE);
  open();
  window->show();
  showPage(WIFI);
  choose("Access Point");
  fillWifi("Net", "password");
  fillAccessPoint("10.42.0.1", "255.255.255.0", 0);
  save();
  EXPECT_FALSE(window->get_visible());
  EXPECT_EQ(recorder.requests().substr(0, 15), "[finalize_wifi]");
}

TEST_F(SaveWifi, WithoutThePrivilegedProgramTheWindowGoesAllTheSame) {
  std::filesystem::remove(recorder.program());
  open("", CLIENT_KEYFILE, WIFI);
  EXPECT_EQ(save(), lines({"existing wifi mode: infrastructure selected mode: infrastructure",
                           "Wifi Device name: wlan0",
                           "! Failed to execute zor-network-permissions-handler: "
                           "No such file or directory"}));
  expectSaved("");
}

// ---- Only the page in front

TEST_F(SaveWifi, LeavesTheEthernetKeyfileAlone) {
  open(STATIC_KEYFILE, CLIENT_KEYFILE, ETHERNET);
  choose("Dynamic IP");
  showPage(WIFI);
  save();
  EXPECT_EQ(readBytes(ethernetFile()), STATIC_KEYFILE);
  expectSaved("[finalize_wifi][ZOR]");
}

TEST_F(SaveEthernet, LeavesTheWifiKeyfileAlone) {
  open(STATIC_KEYFILE, CLIENT_KEYFILE, WIFI);
  choose("Access Point");
  showPage(ETHERNET);
  save();
  EXPECT_EQ(readBytes(wifiFile()), CLIENT_KEYFILE);
  expectSaved("[finalize_ethernet][ethernet]");
}

TEST_F(Save, DoesNothingOnAnyOtherPage) {
  open(STATIC_KEYFILE, CLIENT_KEYFILE, ETHERNET);
  Gtk::Label third;
  notebook().append_page(third, "Third");
  showPage(2);
  EXPECT_EQ(save(), "");
  EXPECT_EQ(readBytes(ethernetFile()), STATIC_KEYFILE);
  EXPECT_EQ(readBytes(wifiFile()), CLIENT_KEYFILE);
  expectNotSaved();
  notebook().remove_page(third);
}

// ---- Leaving

TEST_F(Save, LeavingAsksForARollbackAndTouchesNoFile) {
  for (const int page : {ETHERNET, WIFI}) {
    open(STATIC_KEYFILE, AP_KEYFILE, page);
    choose("Dynamic IP");
    choose("Disabled");
    EXPECT_EQ(leave(), "Closing program without saving\n");
    EXPECT_EQ(readBytes(ethernetFile()), STATIC_KEYFILE);
    EXPECT_EQ(readBytes(wifiFile()), AP_KEYFILE);
    expectSaved("[rollback]");
  }
}

TEST_F(Save, LeavingAsksAndPrintsBeforeItHides) {
  open("", "", ETHERNET);
  window->signal_hide().connect(
      [] { std::cout << (hasChild() ? "(asked, hidden)\n" : "(hidden)\n") << std::flush; });
  EXPECT_EQ(leave(), lines({"Closing program without saving", "(asked, hidden)"}));
}

TEST_F(Save, LeavingWithoutThePrivilegedProgramReportsIt) {
  std::filesystem::remove(recorder.program());
  open("", "", ETHERNET);
  EXPECT_EQ(leave(), lines({"Closing program without saving",
                            "! Failed to execute zor-network-permissions-handler: "
                            "No such file or directory"}));
  EXPECT_FALSE(window->get_visible());
}

}  // namespace

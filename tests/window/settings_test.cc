// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <sys/stat.h>

#include <filesystem>

#include "window_test.h"

namespace {

/** The window's operations on the keyfiles, each called for itself. */
class Settings : public WindowTest {
 protected:
  std::string populateEthernet() {
    return printedBy([this] { window->populateEthernetSettingsFromFile(); });
  }
};

// ---- Filling the Ethernet page

TEST_F(Settings, DynamicAddressEmptiesOnlyTheDnsEntry) {
  open(DYNAMIC_KEYFILE, "", ETHERNET);
  fillEthernet("a", "b", "c", "d");
  populateEthernet();
  EXPECT_EQ(ethernetTexts(), (std::vector<std::string>{"a", "b", "c", ""}));
}

TEST_F(Settings, MissingAddressLeavesTheEntries) {
  open("[connection]\ntype=ethernet\n[ipv4]\nmethod=manual\ndns=8.8.8.8\n", "", ETHERNET);
  fillEthernet("a", "b", "c", "d");
  EXPECT_EQ(populateEthernet(),
            lines({"populateEthernetSettingsFromFile called with mode: manual",
                   "ETHERNET_STATIC_MODE constant: manual", "Ethernet mode matches static.",
                   "! Error: No Ethernet address information found in the configuration file."}));
  EXPECT_EQ(ethernetTexts(), (std::vector<std::string>{"a", "b", "c", "d"}));
}

TEST_F(Settings, UnknownModeFillsNothing) {
  open(STATIC_KEYFILE, "", ETHERNET);
  fillEthernet("a", "b", "c", "d");
  printedBy([this] { window->updateModeView("ap"); });
  EXPECT_EQ(populateEthernet(),
            lines({"populateEthernetSettingsFromFile called with mode: ap",
                   "ETHERNET_STATIC_MODE constant: manual",
                   "! Error: Ethernet mode not set. Cannot populate settings."}));
  EXPECT_EQ(ethernetTexts(), (std::vector<std::string>{"a", "b", "c", "d"}));
}

// ---- Writing the keyfiles

TEST_F(Settings, StaticAddressThatCannotBeBuiltIsWrittenEmpty) {
  const UpdateRecordLock lock;
  const struct {
    std::vector<std::string> texts;
    std::string error;
  } cases[] = {
      {{"10.0.0.2", "255.0.255.0", "10.0.0.1"}, "invalid subnet mask"},
      {{"10.0.0.2", "", "10.0.0.1"}, "invalid subnet mask"},
      {{"10.0.0", "255.255.255.0", "10.0.0.1"}, "invalid IP, subnet, or gateway format"},
      {{"10.0.0.2", "255.255.255.0", "x"}, "invalid IP, subnet, or gateway format"},
  };
  for (const auto& wanted : cases) {
    open(STATIC_KEYFILE, "", ETHERNET);
    // A good address before: nothing of it may stay.
    printedBy([this] { window->writeEthernetSettingsToFile("manual"); });
    fillEthernet(wanted.texts[0], wanted.texts[1], wanted.texts[2], " 9.9.9.9 ");
    EXPECT_EQ(printedBy([this] { window->writeEthernetSettingsToFile("manual"); }),
              "! Unable to create ethernet address: " + wanted.error + "\n");
    EXPECT_EQ(readBytes(ethernetFile()),
              "[connection]\nid=ethernet\ntype=ethernet\nautoconnect-priority=-999\n"
              "autoconnect=true\ninterface-name=eth0\n"
              "[ipv4]\nmethod=manual\naddress1=\ndns=9.9.9.9\n"
              "[ipv6]\naddr-gen-mode=stable-privacy\nmethod=auto\n");
    EXPECT_EQ(printedBy([this] { window->writeEthernetUpdateFile(); }),
              "File created at /tmp/ethernetUpdateSettings\n");
    EXPECT_EQ(readBytes(UpdateRecordLock::PATH), "00 00 00 00 00 00 00 00 00 00 00 00 00 ");
  }
}

TEST_F(Settings, AddressIsWrittenAsItWasTyped) {
  const UpdateRecordLock lock;
  open(STATIC_KEYFILE, "", ETHERNET);
  fillEthernet(" 010.0.0.2", "255.255.254.0 ", "10.0.1.255", "");
  printedBy([this] {
    window->writeEthernetSettingsToFile("manual");
    window->writeEthernetUpdateFile();
  });
  const std::string written = readBytes(ethernetFile());
  EXPECT_NE(written.find("\naddress1= 010.0.0.2/23,10.0.1.255\ndns=\n"), std::string::npos)
      << written;
  EXPECT_EQ(readBytes(UpdateRecordLock::PATH), "00 0A 00 00 02 FF FF FE 00 0A 00 01 FF ");
}

TEST_F(Settings, DynamicAddressForgetsTheOctetsOfAStaticOne) {
  const UpdateRecordLock lock;
  open(STATIC_KEYFILE, "", ETHERNET);
  fillEthernet("10.0.0.2", "255.0.0.0", "10.0.0.1", "");
  printedBy([this] {
    window->writeEthernetSettingsToFile("manual");
    window->writeEthernetSettingsToFile("auto");
    window->writeEthernetUpdateFile();
  });
  EXPECT_EQ(readBytes(UpdateRecordLock::PATH), "01 00 00 00 00 00 00 00 00 00 00 00 00 ");
}

TEST_F(Settings, RecordIsNotWrittenThroughALink) {
  const UpdateRecordLock lock;
  const std::string target = directory.file("precious");
  writeBytes(target, "mine");
  ASSERT_EQ(0, symlink(target.c_str(), UpdateRecordLock::PATH));
  open(STATIC_KEYFILE, "", ETHERNET);
  EXPECT_EQ(printedBy([this] { window->writeEthernetUpdateFile(); }),
            "! Error: Unable to create the file.\n");
  EXPECT_EQ(readBytes(target), "mine");
}

TEST_F(Settings, AccessPointAddressIsBuiltFromTheTextsThatWereValidated) {
  open("", AP_KEYFILE, WIFI);
  const struct {
    std::string mask;
    std::string stored;
    std::string printed;
  } cases[] = {
      {"255.0.0.0", "10.42.5.7/8,10.42.5.1", checked("10.42.5.7", "Valid")},
      {"255.255.0.255", "", "! Unable to create AP address: invalid IP or subnet mask\n"},
  };
  for (const auto& wanted : cases) {
    fillAccessPoint(" 10.42.5.7\t", wanted.mask, 0);
    printedBy([this] { window->validateWifiValues(); });
    fillAccessPoint("9.9.9.9", "255.255.255.255", 0);
    EXPECT_EQ(printedBy([this] { window->writeWifiSettingsToFile("ap"); }),
              "Wifi Device name: wlan1\n" + wanted.printed);
    EXPECT_NE(readBytes(wifiFile()).find("\naddress1=" + wanted.stored + "\n"), std::string::npos)
        << readBytes(wifiFile());
  }
}

// ---- Default files

TEST_F(Settings, MissingWifiFileIsMadeForTheModesThatNeedOne) {
  for (const std::string mode : {"ap", "infrastructure"}) {
    std::remove(wifiFile().c_str());
    open("", "", WIFI);
    printedBy([&] { window->updateModeView(mode); });
    const auto create = [this] { window->createWifiFileIfMissing(); };
    EXPECT_EQ(printedBy(create),
              lines({"New Wi-Fi connection file created at: " + wifiFile(),
                     "No Ethernet Connection Exists",
                     "Ethernet Connection Path: ", "Wifi Connection Path: " + wifiFile()}));
    EXPECT_BYTES_EQ(expectedKeyfile("wifi-default"), readBytes(wifiFile()));
    EXPECT_EQ(printedBy(create), "") << "the path is known by now";
  }
}

TEST_F(Settings, MissingWifiFileIsNotMadeForOtherModes) {
  open("", "", WIFI);
  for (const std::string mode : {"disabled", "", "auto"}) {
    printedBy([&] { window->updateModeView(mode); });
    EXPECT_EQ(printedBy([this] { window->createWifiFileIfMissing(); }), "");
    EXPECT_FALSE(exists(wifiFile()));
  }
}

TEST_F(Settings, TwoEmptyModesAreEqual) {
  open("", "[connection]\ntype=wifi\n", WIFI);
  printedBy([this] { window->updateModeView(""); });
  EXPECT_EQ(printedBy([this] { window->resetWifiFileOnModeChange(); }),
            "existing wifi mode:  selected mode: \n");
  EXPECT_EQ(readBytes(wifiFile()), "[connection]\ntype=wifi\n");

  open("[connection]\ntype=ethernet\n", "", ETHERNET);
  printedBy([this] { window->updateModeView(""); });
  EXPECT_EQ(printedBy([this] { window->resetEthernetFileOnModeChange(); }),
            "existing ethernet mode:  selected mode: \n");
  EXPECT_EQ(readBytes(ethernetFile()), "[connection]\ntype=ethernet\n");
}

TEST_F(Settings, UnknownModesWriteNothing) {
  open(STATIC_KEYFILE, AP_KEYFILE, ETHERNET);
  EXPECT_EQ(printedBy([this] { window->writeEthernetSettingsToFile("ap"); }), "");
  EXPECT_EQ(printedBy([this] { window->writeWifiSettingsToFile("manual"); }),
            "Wifi Device name: wlan1\n");
  EXPECT_BYTES_EQ(STATIC_KEYFILE, readBytes(ethernetFile()));
  EXPECT_BYTES_EQ(AP_KEYFILE, readBytes(wifiFile()));
}

TEST_F(Settings, DefaultFileThatCannotBeMadeIsReportedAndItsNameKept) {
  mkdir(ethernetFile().c_str(), 0700);
  mkdir(wifiFile().c_str(), 0700);
  open();
  showPage(WIFI);
  choose("Client");
  for (int round = 0; round < 2; ++round) {  // the second one has the directories as keyfiles
    EXPECT_EQ(printedBy([this] { window->resetWifiFileOnModeChange(); }),
              lines({"existing wifi mode:  selected mode: infrastructure",
                     "! Failed to create new Wi-Fi connection file at: " + wifiFile()}));
    EXPECT_EQ(printedBy([this] { window->resetEthernetFileOnModeChange(); }),
              lines({"existing ethernet mode:  selected mode: auto",
                     "! Failed to create new Wi-Fi connection file at: " + ethernetFile()}));
  }
  EXPECT_EQ(printedBy([this] { window->removeWifiSettingsFile(); }),
            lines({"Removing existing Wi-Fi settings file at " + wifiFile(),
                   "Resetting Wifi Credentials"}));
  EXPECT_TRUE(exists(ethernetFile()) && exists(wifiFile())) << "only files are deleted";
}

TEST_F(Settings, DefaultFileThatFindsNoRoomLeavesTheOldOneUnderItsName) {
  const auto room = expectedKeyfile("wifi-default").size() - 1;
  for (const char* name : {"old", "wlan0.nmconnectio~"}) {
    std::filesystem::remove(wifiFile());
    writeBytes(directory.file(name), "[connection]\ntype=wifi\n[wifi]\nmode=ap\n");
    open();
    showPage(WIFI);
    choose("Client");
    const ResourceLimit full(RLIMIT_FSIZE, room);
    printedBy([this] { window->resetWifiFileOnModeChange(); });
    EXPECT_EQ(directory.names(), std::vector<std::string>{"wlan0.nmconnection"});
    EXPECT_BYTES_EQ("[connection]\ntype=wifi\n[wifi]\nmode=ap\n", readBytes(wifiFile()));
  }
}

// ---- Resets

TEST_F(Settings, ResetReadsNameAndPasswordAgain) {
  open("", CLIENT_KEYFILE, WIFI);
  fillWifi("typed", "typed too");
  EXPECT_EQ(printedBy([this] { window->resetWifiCredentials(); }), "Resetting Wifi Credentials\n");
  EXPECT_EQ(credentialEntry("SSID").get_text().raw(), "Home");
  EXPECT_EQ(credentialEntry("Password").get_text().raw(), "password2");

  std::remove(wifiFile().c_str());
  printedBy([this] { window->resetWifiCredentials(); });
  EXPECT_EQ(credentialEntry("SSID").get_text().raw(), "");
  EXPECT_EQ(credentialEntry("Password").get_text().raw(), "");
}

TEST_F(Settings, RemovalReadsNameAndPasswordWhileTheFileExists) {
  open("", CLIENT_KEYFILE, WIFI);
  fillWifi("typed", "typed too");
  const auto remove = [this] { window->removeWifiSettingsFile(); };
  EXPECT_EQ(printedBy(remove), lines({"Removing existing Wi-Fi settings file at " + wifiFile(),
                                      "Resetting Wifi Credentials"}));
  EXPECT_FALSE(exists(wifiFile()));
  EXPECT_EQ(credentialEntry("SSID").get_text().raw(), "Home");
  EXPECT_EQ(printedBy(remove),
            lines({"Removing existing Wi-Fi settings file at ", "Resetting Wifi Credentials"}));
}

}  // namespace

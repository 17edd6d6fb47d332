// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gdkmm/clipboard.h>
#include <pthread.h>
#include <sys/stat.h>

#include <filesystem>
#include <iostream>

#include "window_test.h"

namespace {

const std::string RECORD_WRITTEN = "File created at /tmp/ethernetUpdateSettings\n";
const std::string DYNAMIC_RECORD = "01 00 00 00 00 00 00 00 00 00 00 00 00 ";

class Save : public WindowTest {
 protected:
  /** Where the start of the privileged program stands in relation to the hiding of the window. */
  std::string orderOfSave() {
    std::string order;
    window->signal_hide().connect([&] { order = hasChild() ? "request, hide" : "hide"; });
    save();
    return order == "hide" && !recorder.requests().empty() ? "hide, request" : order;
  }

  std::string saveInReadOnlyFolder() {
    directory.giveToOrdinaryUser();
    for (const std::string& name : directory.names()) chmod(directory.file(name).c_str(), 0444);
    chmod(directory.path.c_str(), 0555);
    std::string printed;
    {
      const Unprivileged user;
      printed = save();
    }
    chmod(directory.path.c_str(), 0755);
    return printed;
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
  void fillStatic() {
    fillEthernet("192.168.1.10", "255.255.255.0", "192.168.1.1", " 192.168.1.2 ");
  }

  static std::string validStatic() {
    return lines({"Ethernet IP Address being validated: 192.168.1.10",
                  "Ethernet Subnet Mask being validated: 255.255.255.0",
                  "Ethernet Gateway being validated: 192.168.1.1",
                  "Ethernet DNS Server being validated:  192.168.1.2 "}) +
           checked("192.168.1.10", "Valid") + checked("192.168.1.1", "Valid") +
           checked("192.168.1.2", "Valid") +
           "Valid Ethernet IP, Subnet, Gateway, and Subnet Mask\n";
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
  EXPECT_BYTES_EQ(expectedKeyfile("ethernet-static"), readBytes(ethernetFile()));
  EXPECT_EQ(readBytes(UpdateRecordLock::PATH), "00 C0 A8 01 0A FF FF FF 00 C0 A8 01 01 ");
  EXPECT_EQ(modeOf(ethernetFile()), 0600U);
  expectSaved("[finalize_ethernet][ethernet]");

  open("", "", ETHERNET);
  ASSERT_EQ(ethernetMode(), "Static IP");
  save();
  EXPECT_BYTES_EQ(expectedKeyfile("ethernet-static"), readBytes(ethernetFile())) << "once more";
}

TEST_F(SaveEthernet, DynamicInPlaceOfAnythingElseStartsFromADefaultFile) {
  for (const std::string stored : {"manual", ""}) {
    std::filesystem::remove(ethernetFile());
    if (!stored.empty()) writeBytes(directory.file("old"), STATIC_KEYFILE);
    open("", "", ETHERNET);
    choose("Dynamic IP");
    EXPECT_EQ(save(), "existing ethernet mode: " + stored +
                          " selected mode: auto\n"
                          "New Ethernet connection file created at: " +
                          ethernetFile() + "\n" + RECORD_WRITTEN);
    EXPECT_FALSE(exists(directory.file("old")));
    EXPECT_BYTES_EQ(expectedKeyfile("ethernet-dynamic"), readBytes(ethernetFile()));
    EXPECT_EQ(readBytes(UpdateRecordLock::PATH), DYNAMIC_RECORD);
    expectSaved("[finalize_ethernet][ethernet]");
  }
}

TEST_F(SaveEthernet, KeyfileThatCannotBeReadIsNotReplaced) {
  open(STATIC_KEYFILE, "", ETHERNET);
  choose("Dynamic IP");
  {
    const Lease lease(ethernetFile(), Lease::FOR_GOOD);
    EXPECT_EQ(save(), "existing ethernet mode:  selected mode: auto\n" + RECORD_WRITTEN);
  }
  EXPECT_BYTES_EQ(STATIC_KEYFILE, readBytes(ethernetFile()));
  expectSaved("[finalize_ethernet]");
}

TEST_F(SaveEthernet, KeyfileThatCannotBeReadForAMomentIsSaved) {
  const std::string keyfile = std::string(DYNAMIC_KEYFILE) + "uuid=1\n";
  open(keyfile, "", ETHERNET);
  {
    const Lease lease(ethernetFile(), 5);
    EXPECT_EQ(save(), "existing ethernet mode: auto selected mode: auto\n" + RECORD_WRITTEN);
  }
  EXPECT_NE(readBytes(ethernetFile()).find("\nuuid=1\n"), std::string::npos);
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
  EXPECT_TRUE(save().ends_with("! Invalid format for IP Address or Subnet Mask\n"));
  EXPECT_EQ(readBytes(ethernetFile()), STATIC_KEYFILE);
  EXPECT_FALSE(exists(UpdateRecordLock::PATH));
  expectNotSaved();
}

TEST_F(SaveEthernet, InvalidEntriesAfterAModeChangeLeaveTheDefaultFile) {
  writeBytes(directory.file("old"), DYNAMIC_KEYFILE);
  open("", "", ETHERNET);
  choose("Static IP");
  save();
  EXPECT_FALSE(exists(directory.file("old")));
  EXPECT_BYTES_EQ(expectedKeyfile("ethernet-default"), readBytes(ethernetFile()));
  EXPECT_FALSE(exists(UpdateRecordLock::PATH));
  expectNotSaved();
}

// ---- Ethernet, when files cannot be written

TEST_F(SaveEthernet, DefaultFileThatCannotBeMadeLeavesTheOldOne) {
  std::filesystem::create_directories(ethernetFile() + "/below");
  for (const char* name : {"old", "ethernet.nmconnectio~"}) {
    writeBytes(directory.file(name), DYNAMIC_KEYFILE);
    open("", "", ETHERNET);
    choose("Static IP");
    fillStatic();
    EXPECT_EQ(save(), "existing ethernet mode: auto selected mode: manual\n" + validStatic() +
                          RECORD_WRITTEN + "! Failed to create new Wi-Fi connection file at: " +
                          ethernetFile() + "\n");
    EXPECT_BYTES_EQ(DYNAMIC_KEYFILE, readBytes(directory.file(name)));
    expectSaved("[finalize_ethernet]");
    std::filesystem::remove(directory.file(name));
  }
}

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
  const struct {
    void (*make)(const std::string& name);
    std::string request;
  } cases[] = {
      {[](const std::string& name) { std::filesystem::create_directories(name + "/below"); },
       "[finalize_ethernet]"},
      // The first value that is written replaces it by a file.
      {[](const std::string& name) { mkfifo(name.c_str(), 0600); },
       "[finalize_ethernet][ethernet]"},
  };
  for (const auto& wanted : cases) {
    std::filesystem::remove_all(ethernetFile());
    wanted.make(ethernetFile());
    open("", "", ETHERNET);
    EXPECT_EQ(save(), "existing ethernet mode:  selected mode: auto\n" + RECORD_WRITTEN +
                          "! Failed to create new Wi-Fi connection file at: " + ethernetFile() +
                          "\n");
    expectSaved(wanted.request);
  }
}

TEST_F(SaveEthernet, ReadOnlyFolderKeepsItsKeyfileWhoseIdIsAskedFor) {
  const std::string sameMode = "existing ethernet mode: auto selected mode: auto\n";
  const struct {
    std::string keyfile;
    std::string printed;
    std::string request;
  } cases[] = {
      {DYNAMIC_KEYFILE, sameMode + RECORD_WRITTEN, "[finalize_ethernet][wired]"},
      {"[connection]\ntype=ethernet\n[ipv4]\nmethod=auto\n", sameMode + RECORD_WRITTEN,
       "[finalize_ethernet]"},
      {STATIC_KEYFILE,
       "existing ethernet mode: manual selected mode: auto\n" + RECORD_WRITTEN +
           "! Failed to create new Wi-Fi connection file at: " + ethernetFile() + "\n",
       "[finalize_ethernet][wired]"},
  };
  for (const auto& wanted : cases) {
    open(wanted.keyfile, "", ETHERNET);
    choose("Dynamic IP");
    EXPECT_EQ(saveInReadOnlyFolder(), wanted.printed);
    EXPECT_BYTES_EQ(wanted.keyfile, readBytes(ethernetFile()));
    expectSaved(wanted.request);
    std::filesystem::remove(ethernetFile());
  }
}

// ---- Wi-Fi

class SaveWifi : public Save {};

TEST_F(SaveWifi, AccessPointWithoutAKeyfileStartsFromADefaultFile) {
  open("", "", WIFI);
  choose("Access Point");
  fillWifi("Halvorik AP", "correct horse_1");
  fillAccessPoint(" 192.168.4.20 ", "255.255.255.0", 6);
  EXPECT_EQ(save(), lines({"existing wifi mode:  selected mode: ap",
                           "New Wi-Fi connection file created at: " + wifiFile(),
                           "IP Address being validated:  192.168.4.20 ",
                           "Subnet Mask being validated: 255.255.255.0",
                           "Wifi Password being validated: correct horse_1"}) +
                        checked("192.168.4.20", "Valid") +
                        lines({"Valid IP, Subnet, and password", "Wifi Device name: wlan0"}) +
                        checked("192.168.4.20", "Valid"));
  EXPECT_BYTES_EQ(expectedKeyfile("access-point"), readBytes(wifiFile()));
  EXPECT_EQ(modeOf(wifiFile()), 0600U);
  expectSaved("[finalize_wifi][Hotspot]");
}

TEST_F(SaveWifi, ClientAfterAccessPointStartsFromADefaultFile) {
  writeBytes(directory.file("old"), AP_KEYFILE);
  open("", "", WIFI);
  choose("Client");
  fillWifi("Home", "secret pass");
  EXPECT_EQ(save(), lines({"existing wifi mode: ap selected mode: infrastructure",
                           "New Wi-Fi connection file created at: " + wifiFile(),
                           "Wifi Device name: wlan1"}));
  EXPECT_FALSE(exists(directory.file("old")));
  std::string wanted = expectedKeyfile("client");
  wanted.replace(wanted.find("wlan0"), 5, "wlan1");  // the name that the page shows
  EXPECT_BYTES_EQ(wanted, readBytes(wifiFile()));
  expectSaved("[finalize_wifi][ZOR]");
}

TEST_F(SaveWifi, AccessPointAfterClientStartsFromADefaultFile) {
  open("", expectedKeyfile("client"), WIFI);
  choose("Access Point");
  fillWifi("Halvorik AP", "correct horse_1");
  fillAccessPoint("192.168.4.20", "255.255.255.0", 6);
  save();
  EXPECT_BYTES_EQ(expectedKeyfile("access-point"), readBytes(wifiFile()));
  expectSaved("[finalize_wifi][Hotspot]");
}

TEST_F(SaveWifi, SameModeKeepsTheFileAndItsName) {
  const std::string file = directory.file("wireless");
  for (const auto& [name, request] : {std::pair("access-point", "[finalize_wifi][Hotspot]"),
                                      std::pair("client", "[finalize_wifi][ZOR]")}) {
    writeBytes(file, expectedKeyfile(name));
    open("", "", WIFI);
    save();
    EXPECT_BYTES_EQ(expectedKeyfile(name), readBytes(file)) << "nothing was changed";
    expectSaved(request);

    open("", "", WIFI);
    credentialEntry("SSID").set_text("Elsewhere");
    save();
    EXPECT_NE(readBytes(file).find("\nssid=Elsewhere\n"), std::string::npos);
    expectSaved(request);
    EXPECT_EQ(directory.names(), std::vector<std::string>{"wireless"});
  }
}

TEST_F(SaveWifi, ReadOnlyFolderWithoutAnIdGivesARequestWithoutOne) {
  const std::string keyfile = "[connection]\ntype=wifi\n[wifi]\nmode=infrastructure\n";
  open("", keyfile, WIFI);
  saveInReadOnlyFolder();
  EXPECT_BYTES_EQ(keyfile, readBytes(wifiFile()));
  expectSaved("[finalize_wifi]");
}

TEST_F(SaveWifi, NameAndPasswordEndBeforeTheirFirstLineFeed) {
  open("", expectedKeyfile("client"), WIFI);
  fillWifi("Home\n[wifi]\nmode=ap", "secret pass\npsk=another");
  ASSERT_EQ(credentialEntry("SSID").get_text().raw(), "Home\n[wifi]\nmode=ap")
      << "the page keeps it";
  save();
  EXPECT_BYTES_EQ(expectedKeyfile("client"), readBytes(wifiFile()));
  expectSaved("[finalize_wifi][ZOR]");
}

TEST_F(SaveWifi, OfWhatIsPastedTheFirstLineIsTaken) {
  open("", expectedKeyfile("client"), WIFI);
  auto& entry = credentialEntry("SSID");
  entry.set_text("");
  entry.get_clipboard()->set_text("Office\nchannel=13");
  ASSERT_TRUE(entry.get_first_child()->activate_action("clipboard.paste"));
  ASSERT_TRUE(eventually([&] { return entry.get_text() == "Office"; }));
  save();
  EXPECT_NE(readBytes(wifiFile()).find("\nssid=Office\nmode=infrastructure\n"), std::string::npos)
      << readBytes(wifiFile());
}

TEST_F(SaveWifi, ClientIsNotValidatedAndWrittenAsTyped) {
  const struct {
    std::string ssid;
    std::string password;
    std::string ssidLine;
    std::string passwordLine;
  } cases[] = {
      {"", "", "ssid=", "psk="},
      {" a ", "\u00E9\u20AC", "ssid=\" a \"", "psk=\u00E9\u20AC"},
      {"a;b", "#1\"", "ssid=\"a;b\"", "psk=\"#1\\\"\""},
      {"group=a;b", "proto=#", "ssid=group=a;b", "psk=proto=#"},
  };
  for (const auto& wanted : cases) {
    open("", expectedKeyfile("client"), WIFI);
    fillWifi(wanted.ssid, wanted.password);
    fillAccessPoint("x", "y", 0);
    save();
    expectSaved("[finalize_wifi][ZOR]");
    const std::string written = readBytes(wifiFile());
    for (const std::string& line : {wanted.ssidLine, wanted.passwordLine})
      EXPECT_NE(written.find("\n" + line + "\n"), std::string::npos) << written;
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
  open("", "", WIFI);
  choose("Access Point");
  save();
  EXPECT_FALSE(exists(directory.file("old")));
  EXPECT_BYTES_EQ(expectedKeyfile("wifi-default"), readBytes(wifiFile()));
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
  open("", "", WIFI);
  choose("Access Point");
  fillWifi("Net", "password");
  fillAccessPoint("10.42.0.1", "255.255.255.0", 0);
  save();
  expectSaved("[finalize_wifi][Hotspot]");
}

// ---- Only the page in front

TEST_F(Save, LeavesTheKeyfileOfTheOtherPageAlone) {
  const UpdateRecordLock lock;
  open(STATIC_KEYFILE, CLIENT_KEYFILE, ETHERNET);
  choose("Dynamic IP");
  showPage(WIFI);
  save();
  EXPECT_EQ(readBytes(ethernetFile()), STATIC_KEYFILE);
  expectSaved("[finalize_wifi][ZOR]");

  open(STATIC_KEYFILE, CLIENT_KEYFILE, WIFI);
  choose("Access Point");
  showPage(ETHERNET);
  save();
  EXPECT_EQ(readBytes(wifiFile()), CLIENT_KEYFILE);
  expectSaved("[finalize_ethernet][ethernet]");
}

TEST_F(Save, RefusesAModeOfTheOtherPage) {
  const UpdateRecordLock lock;
  for (const int page : {ETHERNET, WIFI}) {
    open(STATIC_KEYFILE, AP_KEYFILE, page);
    choose(page == ETHERNET ? "Disabled" : "Dynamic IP");
    EXPECT_EQ(save(), page == ETHERNET ? "! Unexpected Ethernet mode: disabled\n"
                                       : "! Unexpected Wi-Fi mode: auto\n");
    EXPECT_EQ(readBytes(ethernetFile()), STATIC_KEYFILE);
    EXPECT_EQ(readBytes(wifiFile()), AP_KEYFILE);
    EXPECT_FALSE(exists(UpdateRecordLock::PATH));
    expectNotSaved();
  }
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

// ---- The window and the request

TEST_F(Save, HidesBeforeTheEthernetRequestAndAfterTheWifiRequest) {
  const UpdateRecordLock lock;
  open(DYNAMIC_KEYFILE, "", ETHERNET);
  EXPECT_EQ(orderOfSave(), "hide, request");
  for (const std::string mode : {"Client", "Access Point", "Disabled"}) {
    open("", expectedKeyfile("access-point"), WIFI);
    choose(mode);
    EXPECT_EQ(orderOfSave(), "request, hide") << mode;
    EXPECT_NE(recorder.requests(), "");
  }
}

TEST_F(Save, WithoutThePrivilegedProgramTheWindowGoesAllTheSame) {
  const UpdateRecordLock lock;
  std::filesystem::remove(recorder.program());
  const struct {
    int page;
    std::string button;
    std::string printed;
  } cases[] = {
      {ETHERNET, "Save And Exit",
       "existing ethernet mode: auto selected mode: auto\n" + RECORD_WRITTEN},
      {WIFI, "Save And Exit",
       "existing wifi mode: infrastructure selected mode: infrastructure\n"
       "Wifi Device name: wlan0\n"},
      {WIFI, "Exit Without Saving", "Closing program without saving\n"},
  };
  for (const auto& wanted : cases) {
    open(DYNAMIC_KEYFILE, CLIENT_KEYFILE, wanted.page);
    EXPECT_EQ(press(wanted.button), wanted.printed +
                                        "! Failed to execute zor-network-permissions-handler: "
                                        "No such file or directory\n");
    EXPECT_FALSE(window->get_visible());
  }
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

TEST_F(Save, LeavingAsksThenPrintsThenHides) {
  static bool leaving = false;
  const auto tellOfRequest = [] {
    if (leaving) std::cout << "(asked)\n" << std::flush;
  };
  ASSERT_EQ(0, pthread_atfork(tellOfRequest, nullptr, nullptr));
  open("", "", ETHERNET);
  window->signal_hide().connect([] { std::cout << "(hidden)\n" << std::flush; });
  leaving = true;
  EXPECT_EQ(leave(), lines({"(asked)", "Closing program without saving", "(hidden)"}));
  leaving = false;
}

}  // namespace

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "app/NetworkManagerConfig.h"
#include "support/bytes.h"
#include "support/child.h"
#include "support/files.h"
#include "support/keyfiles.h"
#include "support/printed.h"

namespace {

using Strings = std::vector<std::string>;

static_assert(NetworkManagerConfig::PRODUCTION == 0);
static_assert(NetworkManagerConfig::DEBUG == 1);
static_assert(!std::is_polymorphic_v<NetworkManagerConfig>);
static_assert(!std::is_copy_constructible_v<NetworkManagerConfig>);
static_assert(!std::is_copy_assignable_v<NetworkManagerConfig>);
static_assert(std::is_same_v<decltype(NetworkManagerConfig::getInstance()), NetworkManagerConfig&>);

using ConstConfig = const NetworkManagerConfig&;
static_assert(
    std::is_same_v<decltype(std::declval<ConstConfig>().getEthernetConnectionPath()), std::string>);
static_assert(std::is_same_v<decltype(std::declval<ConstConfig>().getWifiConnectionPath()),
                             const std::string&>);

const char* const VARIABLE = "ZOR_NETWORKMANAGER_DEBUG_PATH";
const std::string ETHERNET_FILE = "[connection]\ntype=ethernet\n";
const std::string WIFI_FILE = "[connection]\ntype=wifi\n";

/** What is printed when the directory cannot be listed. */
std::string listingError(const std::string& path) {
  try {
    const std::filesystem::directory_iterator entries(path);
  } catch (const std::filesystem::filesystem_error& error) {
    return std::string("! Error: ") + error.what() + "\n";
  }
  return "no error";
}

class Config : public testing::Test {
 protected:
  TemporaryDirectory directory;
  NetworkManagerConfig& config = NetworkManagerConfig::getInstance();

  ~Config() override { unsetenv(VARIABLE); }

  std::string initializeIn(const std::string& path) {
    setenv(VARIABLE, path.c_str(), 1);
    return printedBy([&] { config.initialize(NetworkManagerConfig::DEBUG); });
  }

  Strings sortedConnectionFiles() const {
    Strings names = config.listConnectionFiles();
    std::sort(names.begin(), names.end());
    return names;
  }
};

// ---- The directory

TEST_F(Config, ProductionUsesTheSystemDirectory) {
  const std::string path = "/etc/NetworkManager/system-connections";
  const std::string output =
      printedBy([&] { config.initialize(NetworkManagerConfig::PRODUCTION); });
  EXPECT_EQ(0U, output.find("NetworkManagerDirectoryPath: " + path + "\n")) << output;
  // What is in it is the machine's affair.
  for (const std::string& found :
       {config.getEthernetConnectionPath(), config.getWifiConnectionPath()})
    EXPECT_TRUE(found.empty() || found.find(path + "/") == 0) << found;
}

TEST_F(Config, DebugPrintsTheWholeSearch) {
  writeBytes(directory.file("a.nmconnection"), WIFI_FILE);
  writeBytes(directory.file("b.txt"), ETHERNET_FILE);
  EXPECT_EQ(initializeIn(directory.path), "NetworkManagerDirectoryPath: " + directory.path +
                                              "\nEthernet Connection Path: " + directory.path +
                                              "/b.txt\nWifi Connection Path: " + directory.path +
                                              "/a.nmconnection\n");
  EXPECT_EQ(directory.file("b.txt"), config.getEthernetConnectionPath());
  EXPECT_EQ(directory.file("a.nmconnection"), config.getWifiConnectionPath());
}

TEST_F(Config, OtherModesKeepTheDirectoryAndSearchAgain) {
  initializeIn(directory.path);
  writeBytes(directory.file("new"), ETHERNET_FILE);
  unsetenv(VARIABLE);
  for (const int mode : {2, -1}) {
    EXPECT_EQ(printedBy([&] { config.initialize(mode); }),
              "NetworkManagerDirectoryPath: " + directory.path + "\nEthernet Connection Path: " +
                  directory.path + "/new\nNo Wifi Connection Exists\nWifi Connection Path: \n");
  }
}

TEST_F(Config, MissingDirectoryIsReported) {
  writeBytes(directory.file("file"), ETHERNET_FILE);
  initializeIn(directory.path);
  std::filesystem::remove_all(directory.path);
  EXPECT_EQ(printedBy([&] { config.refreshConnectionPaths(); }),
            "No Ethernet Connection Exists\nEthernet Connection Path: \n"
            "No Wifi Connection Exists\nWifi Connection Path: \n" +
                listingError(directory.path));
  EXPECT_EQ("", config.getEthernetConnectionPath());
  EXPECT_NE("no error", listingError(directory.path));
}

TEST_F(Config, UnreadableDirectoryIsReported) {
  initializeIn(directory.path);
  directory.giveToOrdinaryUser();
  chmod(directory.path.c_str(), 0300);
  EXPECT_EQ(0, asOrdinaryUser([&] {
              Strings names;
              const std::string output = printedBy([&] { names = config.listConnectionFiles(); });
              EXPECT_EQ(output, listingError(directory.path));
              EXPECT_TRUE(names.empty());
            }));
}

// ---- The directory of the test files

class DebugDirectory : public Config {
 protected:
  /** What is found from a working directory; the search prints nothing. */
  void expectFrom(const std::string& from, const std::string& expected) {
    EXPECT_EQ(0, inChild([&] {
                std::filesystem::current_path(from);
                std::string found;
                EXPECT_EQ(printedBy([&] { found = config.getDebugDirectoryPath(); }), "");
                EXPECT_EQ(expected, found);
              }));
  }

  std::string working = directory.makeDirectory("parent/working");
  std::string parent = directory.file("parent");
};

TEST_F(DebugDirectory, MissingEverywhereIsReportedByTheListing) {
  EXPECT_EQ(0, inChild([&] {
              std::filesystem::current_path(working);
              const std::string path = working + "/Ethernet_Test_Connections";
              EXPECT_EQ(printedBy([&] { config.initialize(NetworkManagerConfig::DEBUG); }),
                        "NetworkManagerDirectoryPath: " + path +
                            "\nNo Ethernet Connection Exists\nEthernet Connection Path: \n"
                            "No Wifi Connection Exists\nWifi Connection Path: \n" +
                            listingError(path));
            }));
}

TEST_F(DebugDirectory, VariableWinsAndIsReturnedUnchanged) {
  directory.makeDirectory("parent/working/Ethernet_Test_Connections");
  std::filesystem::create_directory_symlink(parent, directory.file("link"));
  for (const std::string& value :
       {parent, parent + "//", parent + "/working/..", directory.file("link"), std::string("..")}) {
    setenv(VARIABLE, value.c_str(), 1);
    expectFrom(working, value);
  }
}

TEST_F(DebugDirectory, VariableThatNamesNoDirectoryIsIgnored) {
  const std::string found = directory.makeDirectory("parent/working/Ethernet_Test_Connections");
  writeBytes(directory.file("file"), "");
  std::filesystem::create_symlink("nowhere", directory.file("dangling"));
  for (const std::string& value : {directory.file("file"), directory.file("missing"),
                                   directory.file("dangling"), std::string()}) {
    setenv(VARIABLE, value.c_str(), 1);
    expectFrom(working, found);
  }
}

TEST_F(DebugDirectory, CandidatesHaveAnOrder) {
  const std::string first = working + "/Ethernet_Test_Connections";
  const std::string second = working + "/gtkTest/Ethernet_Test_Connections";
  const std::string third = parent + "/Ethernet_Test_Connections";
  expectFrom(working, first);  // even though it is missing
  std::filesystem::create_directories(third);
  expectFrom(working, third);
  std::filesystem::create_directories(second);
  expectFrom(working, second);
  writeBytes(first, "a file is not a directory");
  expectFrom(working, second);
  std::filesystem::remove(first);
  std::filesystem::create_directory_symlink(third, first);
  expectFrom(working, first);
}

TEST_F(DebugDirectory, WorkingDirectoryMayBeGone) {
  EXPECT_EQ(0, inChild([&] {
              std::filesystem::current_path(working);
              std::filesystem::remove_all(parent);
              EXPECT_EQ("Ethernet_Test_Connections", config.getDebugDirectoryPath());
            }));
}

// ---- Listing

TEST_F(Config, ListHoldsRegularFilesOfAnyName) {
  for (const char* name : {"a.nmconnection", "b", ".hidden", "c~", "d e\xFF"})
    writeBytes(directory.file(name), "");
  directory.makeDirectory("directory.nmconnection/below");
  ASSERT_EQ(0, mkfifo(directory.file("fifo").c_str(), 0600));
  std::filesystem::create_symlink("b", directory.file("link"));
  std::filesystem::create_symlink("directory.nmconnection", directory.file("link-to-directory"));
  std::filesystem::create_symlink("nowhere", directory.file("dangling"));
  std::filesystem::create_symlink("loop", directory.file("loop"));
  initializeIn(directory.path);
  EXPECT_EQ((Strings{".hidden", "a.nmconnection", "b", "c~", "d e\xFF", "link"}),
            sortedConnectionFiles());
}

TEST_F(Config, ListHasTheOrderOfTheDirectory) {
  for (int i = 0; i < 50; ++i) writeBytes(directory.file(std::to_string(i)), ETHERNET_FILE);
  initializeIn(directory.path);
  Strings expected;
  for (const auto& entry : std::filesystem::directory_iterator(directory.path))
    expected.push_back(entry.path().filename().string());
  EXPECT_EQ(expected, config.listConnectionFiles());
  EXPECT_EQ(directory.file(expected.front()), config.getEthernetConnectionPath());
}

// ---- Finding

TEST_F(Config, FirstMatchInTheGivenOrderWins) {
  for (const char* name : {"a", "b"}) writeBytes(directory.file(name), ETHERNET_FILE);
  for (const char* name : {"x", "y"}) writeBytes(directory.file(name), WIFI_FILE);
  initializeIn(directory.path);
  const std::string output = printedBy([&] {
    config.findEthernetConnection({"missing", "x", "b", "a"});
    config.findWifiConnection({"a", "y", "x"});
  });
  EXPECT_EQ(output, "");
  EXPECT_EQ(directory.file("b"), config.getEthernetConnectionPath());
  EXPECT_EQ(directory.file("y"), config.getWifiConnectionPath());
}

TEST_F(Config, WithoutAMatchThePathIsCleared) {
  writeBytes(directory.file("a"), ETHERNET_FILE);
  writeBytes(directory.file("x"), WIFI_FILE);
  initializeIn(directory.path);
  EXPECT_EQ(printedBy([&] { config.findEthernetConnection({"x"}); }),
            "No Ethernet Connection Exists\n");
  EXPECT_EQ(printedBy([&] { config.findWifiConnection({}); }), "No Wifi Connection Exists\n");
  EXPECT_EQ("", config.getEthernetConnectionPath());
  EXPECT_EQ("", config.getWifiConnectionPath());
}

TEST_F(Config, TypesCompareExactly) {
  const Strings others = {
      "",
      "[connection]\n",
      "[connection]\ntype=\n",
      "[connection]\ntype=Ethernet\n",
      "[connection]\ntype=ethernet2\n",
      "[connection]\ntype=802-3-ethernet\n",
      "[ethernet]\ntype=ethernet\n",
      "type=ethernet\n",
      "[connection]\ntype=unknown\n",
  };
  for (const std::string& bytes : others) {
    writeBytes(directory.file("a"), bytes);
    initializeIn(directory.path);
    EXPECT_EQ("", config.getEthernetConnectionPath()) << bytes;
  }
  for (const char* bytes :
       {"[CONNECTION]\r\nType = \"ethernet\" ; wired\r\n", "[connection]\ntype:ethernet"}) {
    writeBytes(directory.file("a"), bytes);
    initializeIn(directory.path);
    EXPECT_EQ(directory.file("a"), config.getEthernetConnectionPath()) << bytes;
  }
}

TEST_F(Config, UnreadableFilesAreSkipped) {
  writeBytes(directory.file("a"), ETHERNET_FILE);
  initializeIn(directory.path);
  directory.giveToOrdinaryUser();
  chmod(directory.file("a").c_str(), 0);
  EXPECT_EQ(0, asOrdinaryUser([&] {
              initializeIn(directory.path);
              EXPECT_EQ("", config.getEthernetConnectionPath());
            }));
}

// ---- Default files

class DefaultFiles : public Config {
 protected:
  std::string ethernet = directory.file("ethernet.nmconnection");
  std::string wifi = directory.file("wlan0.nmconnection");

  void SetUp() override { initializeIn(directory.path); }
};

TEST_F(DefaultFiles, HaveTheirBytes) {
  EXPECT_EQ(printedBy([&] { config.createDefaultEthernetFile(); }),
            "New Ethernet connection file created at: " + ethernet + "\n");
  EXPECT_BYTES_EQ(expectedKeyfile("ethernet-default"), readBytes(ethernet));
  EXPECT_EQ(ethernet, config.getEthernetConnectionPath());
  EXPECT_EQ("", config.getWifiConnectionPath());

  EXPECT_EQ(printedBy([&] { config.createDefaultWifiFile(); }),
            "New Wi-Fi connection file created at: " + wifi + "\n");
  EXPECT_BYTES_EQ(expectedKeyfile("wifi-default"), readBytes(wifi));
  EXPECT_EQ(wifi, config.getWifiConnectionPath());
}

TEST_F(DefaultFiles, AreFoundAgain) {
  printedBy([&] {
    config.createDefaultEthernetFile();
    config.createDefaultWifiFile();
  });
  EXPECT_EQ(printedBy([&] { config.refreshConnectionPaths(); }),
            "Ethernet Connection Path: " + ethernet + "\nWifi Connection Path: " + wifi + "\n");
}

TEST_F(DefaultFiles, ArePrivateWhateverTheUmaskAndReplaceWhatIsThere) {
  for (const mode_t mask : {0000, 0022, 0777}) {
    EXPECT_EQ(0, inChild([&] {
                umask(mask);
                printedBy([&] { config.createDefaultWifiFile(); });
                EXPECT_EQ(0600U, modeOf(wifi));
                std::filesystem::remove(wifi);
              }));
    writeBytes(ethernet, std::string(1000, 'x'));
    EXPECT_EQ(0, inChild([&] {
                umask(mask);
                printedBy([&] { config.createDefaultEthernetFile(); });
              }));
    EXPECT_EQ(0600U, modeOf(ethernet));
    EXPECT_BYTES_EQ(expectedKeyfile("ethernet-default"), readBytes(ethernet));
  }
}

TEST_F(DefaultFiles, AreWrittenInPlaceWhereNoOtherFileCanBeMade) {
  writeBytes(ethernet, std::string(1000, 'x'));
  directory.giveToOrdinaryUser();
  chmod(directory.path.c_str(), 0555);
  EXPECT_EQ(0, asOrdinaryUser([&] {
              EXPECT_EQ(printedBy([&] { config.createDefaultEthernetFile(); }),
                        "New Ethernet connection file created at: " + ethernet + "\n");
            }));
  chmod(directory.path.c_str(), 0755);
  EXPECT_BYTES_EQ(expectedKeyfile("ethernet-default"), readBytes(ethernet));
}

TEST_F(DefaultFiles, ReplaceNothingThatCannotBeRead) {
  for (const mode_t mode : {0000, 0200}) {
    writeBytes(ethernet, ETHERNET_FILE);
    chmod(ethernet.c_str(), mode);
    directory.giveToOrdinaryUser();
    EXPECT_EQ(0, asOrdinaryUser([&] {
                EXPECT_EQ(printedBy([&] { config.createDefaultEthernetFile(); }),
                          "! Failed to create new Wi-Fi connection file at: " + ethernet + "\n");
              }));
    EXPECT_BYTES_EQ(ETHERNET_FILE, readBytes(ethernet));
    std::filesystem::remove(ethernet);
  }
  writeBytes(wifi, WIFI_FILE);
  const Lease lease(wifi, Lease::FOR_GOOD);
  EXPECT_EQ(printedBy([&] { config.createDefaultWifiFile(); }),
            "! Failed to create new Wi-Fi connection file at: " + wifi + "\n");
}

TEST_F(DefaultFiles, FailureIsReportedAndThePathKept) {
  std::filesystem::create_directory(ethernet);
  ASSERT_EQ(0, mkfifo(wifi.c_str(), 0600));  // is not waited for either
  EXPECT_EQ(0, inChild([&] {
              EXPECT_EQ(printedBy([&] { config.createDefaultEthernetFile(); }),
                        "! Failed to create new Wi-Fi connection file at: " + ethernet + "\n");
              EXPECT_EQ(printedBy([&] { config.createDefaultWifiFile(); }),
                        "! Failed to create new Wi-Fi connection file at: " + wifi + "\n");
              EXPECT_EQ(ethernet, config.getEthernetConnectionPath());
              EXPECT_EQ(wifi, config.getWifiConnectionPath());
            }));
}

// ---- Values

TEST_F(Config, ReadValuesAreCutTo99Bytes) {
  const std::string file = directory.file("values");
  const std::string text(98, 'x');
  writeBytes(file, "[s]\na=" + text + "12\nb=" + text + "1\n");
  EXPECT_EQ(text + "1", config.readIniString("s", "a", "", file));
  EXPECT_EQ(text + "1", config.readIniString("s", "b", "", file));
  EXPECT_EQ(text + "1", config.readIniString("s", "absent", text + "12", file));
}

TEST_F(Config, StoredValuesAreComparedAsTheyAreRead) {
  const std::string file = directory.file("values");
  const std::string text(98, 'x');
  writeBytes(file, "[s]\na=" + text + "12\n");
  EXPECT_FALSE(config.storesOtherThan(text + "1", "s", "a", file));
  EXPECT_TRUE(config.storesOtherThan(text + "12", "s", "a", file));
  EXPECT_TRUE(config.storesOtherThan(text, "s", "a", file));
  EXPECT_TRUE(config.storesOtherThan("x", "s", "absent", file));
  EXPECT_FALSE(config.storesOtherThan("", "s", "absent", file));
  EXPECT_TRUE(config.storesOtherThan("x", "s", "a", directory.path)) << "nothing is lost with it";
  EXPECT_FALSE(config.storesOtherThan("x", "s", "a", "/proc/self/mem")) << "who knows?";
}

TEST_F(Config, ReadingFallsBackToTheDefault) {
  const std::string file = directory.file("values");
  EXPECT_EQ("default", config.readIniString("s", "k", "default", file));
  writeBytes(file, "[s]\nempty=\n");
  EXPECT_EQ("default", config.readIniString("s", "k", "default", file));
  EXPECT_EQ("default", config.readIniString("t", "empty", "default", file));
  EXPECT_EQ("", config.readIniString("s", "empty", "default", file));
  EXPECT_EQ("default", config.readIniString("s", "k", "default", ""));
}

TEST_F(Config, WritingNeverDeletes) {
  const std::string file = directory.file("values");
  EXPECT_EQ(1, config.writeIniString("s", "k", "v", file));
  EXPECT_EQ(1, config.writeIniString("s", "k", "", file));
  EXPECT_EQ(1, config.writeIniString("s", "new", "", file));
  EXPECT_EQ(1, config.writeIniString("", "top", "a;b", file));
  EXPECT_BYTES_EQ("top=\"a;b\"\n[s]\nk=\nnew=\n", readBytes(file));
  EXPECT_EQ(0, config.writeIniString("s", "k", "v", directory.file("missing/values")));
  EXPECT_EQ(0, config.writeIniString("s", "k", "v", ""));
}

}  // namespace

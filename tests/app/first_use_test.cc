// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// The object as it is before anything was done with it. A program of its own, since there is only
// one such object in a process.
#include <gtest/gtest.h>

#include "app/NetworkManagerConfig.h"
#include "support/printed.h"

namespace {

// As early as the program's own entry point takes it.
NetworkManagerConfig* const early = &NetworkManagerConfig::getInstance();

TEST(FirstUse, NothingIsKnown) {
  EXPECT_EQ(early, &NetworkManagerConfig::getInstance());
  EXPECT_EQ("", early->getEthernetConnectionPath());
  EXPECT_EQ("", early->getWifiConnectionPath());

  const std::string output = printedBy([] { early->initialize(7); });
  EXPECT_EQ(0U, output.find("NetworkManagerDirectoryPath: \n"
                            "No Ethernet Connection Exists\nEthernet Connection Path: \n"
                            "No Wifi Connection Exists\nWifi Connection Path: \n"
                            "! Error: "))
      << "an unknown mode chooses no directory: " << output;
}

}  // namespace

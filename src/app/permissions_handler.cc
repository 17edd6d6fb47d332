// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>

#include "app/NetworkManagerConfig.h"

namespace {

constexpr const char* PERMISSIONS_HANDLER = "zor-network-permissions-handler";

}  // namespace

void NetworkManagerConfig::runPermissionsHandler(const std::string& action,
                                                 const std::string& argument) const {
  if (fork() != 0) return;

  std::signal(SIGPIPE, SIG_DFL);  // ignored in this program only
  // Not flushed: it shows on a terminal, and nowhere else.
  std::cout << "Calling permissions handler action: " + action + "\n";
  execlp(PERMISSIONS_HANDLER, PERMISSIONS_HANDLER, action.c_str(),
         argument.empty() ? nullptr : argument.c_str(), nullptr);
  std::perror("Failed to execute zor-network-permissions-handler");
  _exit(1);
}

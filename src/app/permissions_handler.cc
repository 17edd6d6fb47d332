// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "app/NetworkManagerConfig.h"
#include "app/inherited.h"
#include "base/retry.h"

namespace {

constexpr const char* PERMISSIONS_HANDLER = "zor-network-permissions-handler";

}  // namespace

void NetworkManagerConfig::runPermissionsHandler(const std::string& action,
                                                 const std::string& argument) const {
  pid_t child{};
  (void)succeedsOnRetry([&] { return (child = fork()) >= 0; });
  if (child != 0) return;

  // Not flushed: it shows on a terminal, and nowhere else.
  std::cout << "Calling permissions handler action: " + action + "\n";
  restoreInherited();  // not before the line: a reader that is gone would end the request
  (void)succeedsOnRetry([&] {
    execlp(PERMISSIONS_HANDLER, PERMISSIONS_HANDLER, action.c_str(),
           argument.empty() ? nullptr : argument.c_str(), nullptr);
    return false;
  });
  std::perror("Failed to execute zor-network-permissions-handler");
  _exit(1);
}

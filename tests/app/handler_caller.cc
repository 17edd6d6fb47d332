// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Requests an action of the privileged program: handler-caller ACTION ARGUMENT. Goes on afterwards:
// reports the end of the child on standard output and makes the file that RETURNED names.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <string>

#include "app/NetworkManagerConfig.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::signal(SIGPIPE, SIG_IGN);  // as the program does
  NetworkManagerConfig::getInstance().runPermissionsHandler(argv[1], argv[2]);

  if (const char* returned = std::getenv("RETURNED")) std::ofstream(returned) << "yes";
  int status = 0;
  const bool reaped = wait(&status) > 0;
  std::string report = "no child\n";
  if (reaped && WIFEXITED(status)) report = "exit " + std::to_string(WEXITSTATUS(status)) + "\n";
  return write(STDOUT_FILENO, report.data(), report.size()) < 0 ? 1 : 0;
}

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Stands in for the privileged program and writes down what it was given: its arguments one by one,
// its umask, whether two signals are ignored and whether its caller went on, into the file that
// RECORD names.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

namespace {

bool isIgnored(int number) {
  struct sigaction action {};
  return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/** Waits for the caller's sign of life, which does not come if the caller waits for us. */
bool callerWentOn(const char* path) {
  constexpr unsigned STEP = 10000;
  for (int i = 0; i < 1000; ++i, usleep(STEP))
    if (access(path, F_OK) == 0) return true;
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  std::ofstream record(std::getenv("RECORD"));
  for (int i = 0; i < argc; ++i) record << "<" << argv[i] << ">";
  record << std::oct << " umask " << umask(0) << (isIgnored(SIGPIPE) ? " SIGPIPE ignored" : "")
         << (isIgnored(SIGHUP) ? " SIGHUP ignored" : "");
  if (const char* returned = std::getenv("RETURNED"))
    record << (callerWentOn(returned) ? " caller went on" : " caller waits");
}

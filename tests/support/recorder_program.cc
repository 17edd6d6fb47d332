// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Stands in for the privileged program. Writes what it was called with into the folder that
// ZOR_RECORDS names: "[ARGUMENT]" for each argument and, behind a NUL, its name, its umask and
// which of two signals are ignored. A file is complete as soon as it has its name.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/recorder.h"

namespace {

bool isIgnored(int number) {
  struct sigaction action {};
  return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

int main(int argc, char** argv) {
  const char* const folder = std::getenv("ZOR_RECORDS");
  if (folder == nullptr) return 1;
  const std::string name = std::string(folder) + "/" + std::to_string(getpid());
  const std::string unfinished = name + ".part";
  std::FILE* const file = std::fopen(unfinished.c_str(), "wb");
  if (file == nullptr) return 1;
  for (int i = 1; i < argc; ++i) std::fprintf(file, "[%s]", argv[i]);
  std::fprintf(file, "%c%s umask %o%s%s", '\0', argv[0], static_cast<unsigned>(umask(0)),
               isIgnored(SIGPIPE) ? " SIGPIPE ignored" : "",
               isIgnored(SIGHUP) ? " SIGHUP ignored" : "");
  if (std::fclose(file) != 0 || std::rename(unfinished.c_str(), name.c_str()) != 0) return 1;
  return RECORDER_STATUS;
}

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Stands in for the privileged program. Writes what it was called with into the folder that
// ZOR_RECORDS names: "[ARGUMENT]" for each argument and, behind a NUL, its name, its umask and
// which of some signals are ignored or blocked. A file is complete as soon as it has its name.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "support/recorder.h"

namespace {

/** Which signals do nothing, and which would wait. */
std::string signals() {
  constexpr std::array<std::pair<int, const char*>, 4> LOOKED_AT = {
      {{SIGPIPE, " SIGPIPE"}, {SIGXFSZ, " SIGXFSZ"}, {SIGHUP, " SIGHUP"}, {SIGTERM, " SIGTERM"}}};
  sigset_t blocked;
  sigprocmask(SIG_SETMASK, nullptr, &blocked);
  std::string text;
  for (const auto& [number, name] : LOOKED_AT) {
    struct sigaction action {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler == SIG_IGN) text.append(name).append(" ignored");
    if (sigismember(&blocked, number) == 1) text.append(name).append(" blocked");
  }
  return text;
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
  std::fprintf(file, "%c%s umask %o%s", '\0', argv[0], static_cast<unsigned>(umask(0)),
               signals().c_str());
  if (std::fclose(file) != 0 || std::rename(unfinished.c_str(), name.c_str()) != 0) return 1;
  return RECORDER_STATUS;
}

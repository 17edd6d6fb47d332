// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// The operations whose instructions are watched, each once between two of callgrind's marks:
//   operations FOLDER
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "app/NetworkManagerConfig.h"
#include "ini/ini.h"
#include "keyfiles.h"
#include "settings/keyfile.h"

namespace {

std::string folder;

/** Runs an operation on a fresh file; twice, so that whatever happens once only has happened. */
void count(const char* name, const std::string& text,
           const std::function<void(const char* path)>& operation) {
  const std::string path = folder + "/keyfile";
  for (int turn = 0; turn < 2; ++turn) {
    std::filesystem::remove(path);
    if (!text.empty()) writeKeyfile(path, text);
    CALLGRIND_ZERO_STATS;
    operation(path.c_str());
    if (turn == 1) CALLGRIND_DUMP_STATS_AT(name);
  }
}

void countRead(const char* name, const Keyfile& file, const KeyfileEntry& entry) {
  const std::string section(entry.section);
  const std::string key(entry.key);
  count(name, file.text, [&](const char* path) {
    char value[100];
    ini_gets(section.c_str(), key.c_str(), "", value, sizeof value, path);
  });
}

/** Value NULL deletes the key. */
void countWrite(const char* name, const Keyfile& file, const char* value) {
  const std::string section(file.changed.section);
  const std::string key(file.changed.key);
  count(name, file.text,
        [&](const char* path) { ini_puts(section.c_str(), key.c_str(), value, path); });
}

void countDiscovery() {
  writeKeyfile(folder + "/ethernet", ethernetKeyfile());
  writeKeyfile(folder + "/bridge", bridgeKeyfile());
  setenv("ZOR_NETWORKMANAGER_DEBUG_PATH", folder.c_str(), 1);
  NetworkManagerConfig& config = NetworkManagerConfig::getInstance();
  config.initialize(NetworkManagerConfig::DEBUG);
  count("discovery of 3 files", wifiKeyfile().text,
        [&](const char* /*path*/) { config.refreshConnectionPaths(); });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  folder = argv[1];
  const Keyfile& wifi = wifiKeyfile();
  const Keyfile generated = generatedKeyfile(1000);
  const Keyfile missing = {0, "", {}, {}, {}, wifi.changed};
  const std::string sameLength(generated.changed.value.size(), 'x');

  countRead("read first key, 26 lines", wifi, wifi.first);
  countRead("read last key, 26 lines", wifi, wifi.last);
  countRead("read absent key, 26 lines", wifi, wifi.absent);
  countRead("read last key, 1000 lines", generated, generated.last);
  countWrite("write other length, 26 lines", wifi, "a longer one than before");
  countWrite("write same length, 26 lines", wifi, "correct horse 43");
  countWrite("write unchanged, 26 lines", wifi, "correct horse 42");
  countWrite("write other length, 1000 lines", generated, "a longer one than before");
  countWrite("write same length, 1000 lines", generated, sameLength.c_str());
  countWrite("delete key, 26 lines", wifi, nullptr);
  countWrite("create file", missing, "correct horse 42");
  count("remove quotes, 26 lines", wifi.text,
        [](const char* path) { removeKeyfileValueQuotes(path); });
  countDiscovery();
  return 0;
}

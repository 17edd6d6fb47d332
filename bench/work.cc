// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "work.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "app/NetworkManagerConfig.h"
#include "keyfiles.h"
#include "settings/ethernet.h"
#include "settings/wifi.h"

namespace {

namespace fs = std::filesystem;

using Value = std::array<char, 100>;

class ReadWork : public Work {
 public:
  ReadWork(const std::string& workName, const std::string& folder, const Keyfile& source,
           const KeyfileEntry& wanted)
      : Work(workName, source.lines),
        file(folder + "/keyfile-" + std::to_string(source.lines)),
        section(wanted.section),
        key(wanted.key),
        expected(wanted.value) {
    writeKeyfile(file, source.text);
  }

  std::string prepare(const Contender& /*contender*/) override { return file; }

  void run(const Contender& contender, const std::string& path, unsigned /*turn*/) override {
    found = contender.read(path.c_str(), section.c_str(), key.c_str(), value.data(), value.size());
  }

  bool isRight(const Contender& /*contender*/, const std::string& /*path*/,
               unsigned /*turn*/) override {
    return found == !expected.empty() && (!found || expected == value.data());
  }

 private:
  std::string file;
  std::string section;
  std::string key;
  std::string expected;  // empty: the key is not there
  Value value{};
  bool found = false;
};

/** Work on a keyfile that each contender has for itself, since each writes it in its own way. */
class ChangingWork : public Work {
 public:
  ChangingWork(const std::string& workName, int size, std::string where)
      : Work(workName, size), folder(std::move(where)) {}

  bool suits(const Contender& contender) const override { return contender.write != nullptr; }

 protected:
  std::string pathFor(const Contender& contender) const {
    return folder + "/" + contender.name + "/" + name + "-" + std::to_string(lines);
  }

  static bool isStored(const Contender& contender, const std::string& path,
                       const std::string& section, const std::string& key,
                       const std::string& expected) {
    Value value{};
    return contender.read(path.c_str(), section.c_str(), key.c_str(), value.data(), value.size()) &&
           expected == value.data();
  }

 private:
  std::string folder;
};

class WriteWork : public ChangingWork {
 public:
  WriteWork(const std::string& workName, std::string where, const Keyfile& source,
            const std::string& firstValue, const std::string& secondValue)
      : ChangingWork(workName, source.lines, std::move(where)),
        text(source.text),
        section(source.changed.section),
        key(source.changed.key),
        values{firstValue, secondValue} {}

  std::string prepare(const Contender& contender) override {
    writeKeyfile(pathFor(contender), text);
    return pathFor(contender);
  }

  void run(const Contender& contender, const std::string& path, unsigned turn) override {
    contender.write(path.c_str(), section.c_str(), key.c_str(), values[turn % 2].c_str());
  }

  bool isRight(const Contender& contender, const std::string& path, unsigned turn) override {
    return isStored(contender, path, section, key, values[turn % 2]);
  }

 private:
  std::string text;
  std::string section;
  std::string key;
  std::array<std::string, 2> values;
};

/** A page that is saved again with two of its values changed, as a person would. */
class SaveWork : public ChangingWork {
 public:
  using Entries = std::vector<KeyfileEntry>;

  SaveWork(const std::string& workName, std::string where, std::array<Entries, 2> rows,
           std::size_t lookedAt)
      : ChangingWork(workName, static_cast<int>(rows[0].size()), std::move(where)),
        entries(std::move(rows)),
        checked(lookedAt) {}

  std::string prepare(const Contender& contender) override {
    const std::string path = pathFor(contender);
    NetworkManagerConfig& config = NetworkManagerConfig::getInstance();
    for (const KeyfileEntry& entry : entries[1])
      config.writeIniString(std::string(entry.section), std::string(entry.key), entry.value, path);
    removeKeyfileValueQuotes(path);
    return path;
  }

  void run(const Contender& contender, const std::string& path, unsigned turn) override {
    for (const KeyfileEntry& entry : entries[turn % 2])
      contender.write(path.c_str(), std::string(entry.section).c_str(),
                      std::string(entry.key).c_str(), entry.value.c_str());
    if (contender.finishSave != nullptr) contender.finishSave(path.c_str());
  }

  bool isRight(const Contender& contender, const std::string& path, unsigned turn) override {
    const KeyfileEntry& entry = entries[turn % 2].at(checked);
    return isStored(contender, path, std::string(entry.section), std::string(entry.key),
                    entry.value);
  }

 private:
  std::array<Entries, 2> entries;
  std::size_t checked;  // the row that is read back
};

/**
 * The search for the first wired and the first wireless keyfile. All the others are of a third type
 * and come first: a memory file system lists the newest file first.
 */
class DiscoveryWork : public Work {
 public:
  DiscoveryWork(const std::string& where, int count)
      : Work("discovery", count), folder(where + "/folder-" + std::to_string(count)) {
    fs::create_directories(folder);
    writeKeyfile(folder + "/ethernet", ethernetKeyfile());
    writeKeyfile(folder + "/wlan0", wifiKeyfile().text);
    for (int i = 2; i < count; ++i)
      writeKeyfile(folder + "/bridge-" + std::to_string(i), bridgeKeyfile());
  }

  std::string prepare(const Contender& /*contender*/) override {
    setenv("ZOR_NETWORKMANAGER_DEBUG_PATH", folder.c_str(), 1);
    NetworkManagerConfig::getInstance().initialize(NetworkManagerConfig::DEBUG);
    return folder;
  }

  void run(const Contender& contender, const std::string& /*path*/, unsigned /*turn*/) override {
    if (contender.discover != nullptr) return contender.discover(folder.c_str());
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
      if (entry.is_regular_file()) names.push_back(entry.path().filename());
    wired = find(contender, names, "ethernet");
    wireless = find(contender, names, "wifi");
  }

  bool isRight(const Contender& contender, const std::string& /*path*/,
               unsigned /*turn*/) override {
    const NetworkManagerConfig& config = NetworkManagerConfig::getInstance();
    if (contender.discover != nullptr)
      return config.getEthernetConnectionPath() == folder + "/ethernet" &&
             config.getWifiConnectionPath() == folder + "/wlan0";
    return wired == folder + "/ethernet" && wireless == folder + "/wlan0";
  }

 private:
  std::string find(const Contender& contender, const std::vector<std::string>& names,
                   const char* type) const {
    for (const std::string& entry : names) {
      const std::string candidate = folder + "/" + entry;
      Value value{};
      if (contender.read(candidate.c_str(), "connection", "type", value.data(), value.size()) &&
          std::strcmp(value.data(), type) == 0)
        return candidate;
    }
    return {};
  }

  std::string folder;
  std::string wired;
  std::string wireless;
};

}  // namespace

std::vector<std::unique_ptr<Work>> allWork(const std::string& folder) {
  for (const Contender& contender : allContenders())
    fs::create_directories(folder + "/" + contender.name);

  std::vector<std::unique_ptr<Work>> all;
  const auto read = [&](const char* name, const Keyfile& file, const KeyfileEntry& wanted) {
    all.push_back(std::make_unique<ReadWork>(name, folder, file, wanted));
  };
  const auto write = [&](const char* name, const Keyfile& file, const std::string& first,
                         const std::string& second) {
    all.push_back(std::make_unique<WriteWork>(name, folder, file, first, second));
  };
  std::vector<Keyfile> files = {wifiKeyfile(), generatedKeyfile(1000), generatedKeyfile(100000)};
  for (const Keyfile& file : files) {
    const std::string& value = file.changed.value;
    read("read first", file, file.first);
    read("read last", file, file.last);
    read("read absent", file, file.absent);
    write("write other", file, value + " with more", value);
    write("write same", file, std::string(value.size(), 'x'), value);
    write("write unchanged", file, value, value);
  }
  // Two more lengths, for the curves.
  for (const int lines : {200, 10000}) {
    const Keyfile file = generatedKeyfile(lines);
    read("read last", file, file.last);
    write("write other", file, file.changed.value + " with more", file.changed.value);
  }

  const auto accessPoint = [](const char* ssid, const char* password) {
    return wifiKeyfileEntries(WIFI_AP_MODE,
                              {"wlan0", ssid, password, "6", "192.168.4.1/24,192.168.4.1"});
  };
  const auto fixedAddress = [](const char* address, const char* dns) {
    return ethernetKeyfileEntries(ETHERNET_STATIC_MODE, {address, dns});
  };
  all.push_back(std::make_unique<SaveWork>(
      "save Wi-Fi", folder,
      std::array{accessPoint("Workshop", "correct horse 42"), accessPoint("Hall", "a battery 7")},
      12));
  all.push_back(std::make_unique<SaveWork>(
      "save Ethernet", folder,
      std::array{fixedAddress("192.168.7.20/24,192.168.7.1", "192.168.7.1"),
                 fixedAddress("10.0.0.20/8,10.0.0.1", "10.0.0.1")},
      7));
  for (const int count : {2, 1000}) all.push_back(std::make_unique<DiscoveryWork>(folder, count));
  return all;
}

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "keyfiles.h"

#include <cstdlib>
#include <fstream>
#include <iostream>

namespace {

std::string sectionName(int number) { return "section-" + std::to_string(number); }

std::string valueText(int line) { return "value-" + std::to_string(line); }

}  // namespace

const Keyfile& wifiKeyfile() {
  static const Keyfile file = {26,
                               "[connection]\n"
                               "id=Hotspot\n"
                               "type=wifi\n"
                               "autoconnect=true\n"
                               "interface-name=wlan0\n"
                               "\n"
                               "[wifi]\n"
                               "mode=ap\n"
                               "ssid=Workshop\n"
                               "band=bg\n"
                               "channel=6\n"
                               "\n"
                               "[wifi-security]\n"
                               "group=ccmp;\n"
                               "key-mgmt=wpa-psk\n"
                               "pairwise=ccmp;\n"
                               "proto=rsn;\n"
                               "psk=correct horse 42\n"
                               "\n"
                               "[ipv4]\n"
                               "method=shared\n"
                               "address1=192.168.4.1/24,192.168.4.1\n"
                               "\n"
                               "[ipv6]\n"
                               "addr-gen-mode=stable-privacy\n"
                               "method=ignore\n",
                               {"connection", "id", "Hotspot"},
                               {"ipv6", "method", "ignore"},
                               {"ipv6", "dns", ""},
                               {"wifi-security", "psk", "correct horse 42"}};
  return file;
}

Keyfile generatedKeyfile(int lines) {
  constexpr int PERIOD = 10;  // an empty line, a header and eight keys
  std::string text;
  for (int line = 0; line < lines; ++line) {
    const int place = line % PERIOD;
    if (place == 1) text += "[" + sectionName(line / PERIOD) + "]";
    if (place > 1) text += "key-" + std::to_string(place) + "=" + valueText(line);
    text += '\n';
  }
  const std::string lastSection = sectionName((lines - 1) / PERIOD);
  const KeyfileEntry last = {lastSection, "key-9", valueText(lines - 1)};
  return {lines, text, {"section-0", "key-2", valueText(2)}, last, {lastSection, "key-99", ""},
          last};
}

std::string ethernetKeyfile() {
  return "[connection]\n"
         "id=ethernet\n"
         "type=ethernet\n"
         "autoconnect-priority=-999\n"
         "interface-name=eth0\n"
         "\n"
         "[ipv4]\n"
         "method=auto\n";
}

std::string bridgeKeyfile() {
  return "[connection]\n"
         "id=bridge\n"
         "type=bridge\n"
         "interface-name=br0\n"
         "\n"
         "[ipv4]\n"
         "method=disabled\n";
}

void writeKeyfile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text << std::flush;
  if (file) return;
  std::cerr << "cannot write " << path << std::endl;
  std::exit(1);
}

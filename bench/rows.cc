// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "rows.h"

namespace {

constexpr int KEYFILE_LINES = 26;
const char KEYFILE[] =
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
    "method=ignore\n";

constexpr int PERIOD = 10;  // an empty line, a header and eight keys

std::string sectionName(int number) { return "section-" + std::to_string(number); }

std::string valueText(int line) { return "value-" + std::to_string(line); }

/** A keyfile of a multiple of PERIOD lines. */
std::string longKeyfile(int lines) {
  std::string text;
  for (int line = 0; line < lines; ++line) {
    const int place = line % PERIOD;
    if (place == 1) text += "[" + sectionName(line / PERIOD) + "]";
    if (place > 1) text += "key-" + std::to_string(place) + "=" + valueText(line);
    text += '\n';
  }
  return text;
}

}  // namespace

std::vector<Row> allRows() {
  std::vector<Row> rows;
  const auto keyfile = [&](const char* name, const char* section, const char* key,
                           std::vector<std::string> values) {
    rows.push_back({name, KEYFILE_LINES, KEYFILE, section, key, std::move(values)});
  };
  const std::string psk = "correct horse 42";
  keyfile("read first", "connection", "id", {"Hotspot"});
  keyfile("read last", "ipv6", "method", {"ignore"});
  keyfile("write other", "wifi-security", "psk", {psk + " with more", psk});
  keyfile("write same", "wifi-security", "psk", {std::string(psk.size(), 'x'), psk});
  keyfile("write unchanged", "wifi-security", "psk", {psk, psk});

  for (const int lines : {1000, 100000}) {
    const std::string text = longKeyfile(lines);
    const std::string section = sectionName((lines - 1) / PERIOD);
    const std::string value = valueText(lines - 1);
    rows.push_back({"read last", lines, text, section, "key-9", {value}});
    rows.push_back({"write other", lines, text, section, "key-9", {value + " with more", value}});
  }
  return rows;
}

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Boost's property_tree. Saving forgets the comments of the file.
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>

#include "contender.h"

namespace {

using boost::property_tree::ptree;

bool readValue(const char* path, const char* section, const char* key, char* value,
               std::size_t size) {
  ptree file;
  read_ini(path, file);
  const auto group = file.find(section);
  if (group == file.not_found()) return false;
  const auto found = group->second.find(key);
  if (found == group->second.not_found()) return false;
  const std::string& text = found->second.data();
  copyValue(value, size, text.data(), text.size());
  return true;
}

bool writeValue(const char* path, const char* section, const char* key, const char* value) {
  ptree file;
  read_ini(path, file);
  const auto group = file.find(section);
  if (group == file.not_found()) return false;
  group->second.put(key, value);
  return saveBeside(path, [&](const char* beside) {
    write_ini(beside, file);
    return true;
  });
}

const Entered BOOST({"Boost", readValue, writeValue});

}  // namespace

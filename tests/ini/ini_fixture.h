// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "ini/ini.h"
#include "support/bytes.h"
#include "support/files.h"

/** A folder with one INI file, and the operations on it as strings. */
class IniTest : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string file = directory.file("test.ini");
  std::string temporary = directory.file("test.in~");  // while it is rewritten

  /** The value of key "k" in section "s" of a file with these bytes. */
  std::string valueIn(std::string_view bytes) {
    writeBytes(file, bytes);
    return get("s", "k");
  }

  std::string get(const char* section, const char* key) const {
    std::array<char, 1024> buffer{};
    const int length =
        ini_gets(section, key, "<default>", buffer.data(), buffer.size(), file.c_str());
    EXPECT_EQ(length, static_cast<int>(std::string_view(buffer.data()).size()));
    return buffer.data();
  }

  int put(const char* section, const char* key, const char* value) const {
    return ini_puts(section, key, value, file.c_str());
  }

  /** What a file with these bytes becomes; a temporary file must not stay. */
  std::string changed(std::string_view bytes, const char* section, const char* key,
                      const char* value) {
    writeBytes(file, bytes);
    EXPECT_EQ(1, put(section, key, value));
    EXPECT_EQ(std::vector<std::string>{"test.ini"}, directory.names());
    return readBytes(file);
  }
};

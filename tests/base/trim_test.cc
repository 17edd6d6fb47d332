// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/trim.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Trim, RemovesBlanksAtBothEndsOnly) {
  EXPECT_EQ("a b", trim(" \t\n\ra b \t\n\r"));
  EXPECT_EQ("a", trim("a"));
  EXPECT_EQ("", trim(""));
  EXPECT_EQ("", trim(" \t\n\r"));
}

TEST(Trim, RemovesNothingElse) {
  for (int byte = 0; byte <= 255; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    const bool blank = text == " " || text == "\t" || text == "\n" || text == "\r";
    EXPECT_EQ(blank ? "" : text, trim(text)) << "byte " << byte;
  }
}

}  // namespace

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/text.h"
#include "settings/log.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/capture.h"
#include "support/files.h"

using namespace std::string_literals;

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

TEST(Lines, GoToTheirStreamFlushed) {
  EXPECT_EQ(capture([] { logLine("a", std::string("b"), std::string_view("c")); }),
            (Output{"abc\n", ""}));
  EXPECT_EQ(capture([] { logError("a", std::string("b"), std::string_view("c")); }),
            (Output{"", "abc\n"}));
  EXPECT_EQ(capture([] { logLine(""); }), (Output{"\n", ""}));
}

TEST(Lines, CarryTheBytesThatTheyAreGiven) {
  std::string bytes;
  for (int byte = 0; byte <= 255; ++byte) bytes += static_cast<char>(byte);
  EXPECT_BYTES_EQ(bytes + "\n", capture([&] { logLine(bytes); }).out);
  EXPECT_BYTES_EQ(bytes + "\n", capture([&] { logError(bytes); }).err);
}

TEST(Lines, GoOnAfterTheStreamFailed) {
  std::ostringstream stream;
  stream.setstate(std::ios::badbit);
  printLine(stream, "next");
  EXPECT_EQ("next\n", stream.str());
}

}  // namespace

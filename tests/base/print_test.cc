// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/print.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/capture.h"
#include "support/files.h"

namespace {

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

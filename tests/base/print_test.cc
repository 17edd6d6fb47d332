// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/print.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/bytes.h"
#include "support/printed.h"

namespace {

TEST(Lines, GoToTheirStreamFlushed) {
  EXPECT_EQ(printedBy([] { logLine("a", std::string("b"), std::string_view("c")); }), "abc\n");
  EXPECT_EQ(printedBy([] { logError("a", std::string("b"), std::string_view("c")); }), "! abc\n");
  EXPECT_EQ(printedBy([] { logLine(""); }), "\n");
}

TEST(Lines, CarryTheBytesThatTheyAreGiven) {
  std::string bytes;
  for (int byte = 0; byte <= 255; ++byte) bytes += static_cast<char>(byte);
  EXPECT_BYTES_EQ(bytes + "\n", printedBy([&] { logLine(bytes); }));
  const std::string twoLines = "! " + bytes.substr(0, 11) + "! " + bytes.substr(11) + "\n";
  EXPECT_BYTES_EQ(twoLines, printedBy([&] { logError(bytes); }));
}

TEST(Lines, GoOnAfterTheStreamFailed) {
  std::ostringstream stream;
  stream.setstate(std::ios::badbit);
  printLine(stream, "next");
  EXPECT_EQ("next\n", stream.str());
}

}  // namespace

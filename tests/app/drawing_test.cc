// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "app/drawing.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/child.h"

namespace {

constexpr const char* NAMES[] = {"GSK_RENDERER", "GDK_DEBUG", "GDK_DISABLE"};

/** What the environment says to the toolkit; "-" for a name that is not there. */
std::string chosen() {
  std::string text;
  for (const char* name : NAMES) {
    const char* value = std::getenv(name);
    text += value != nullptr ? value : "-";
    text += ' ';
  }
  return text;
}

TEST(Drawing, IsChosenByTheNamesOfTheToolkitsVersion) {
  const struct {
    unsigned version;
    std::string names;
  } cases[] = {{8, "cairo gl-disable - "},
               {14, "cairo gl-disable - "},
               {16, "cairo - gl,vulkan "},
               {24, "cairo - gl,vulkan "}};
  for (const auto& wanted : cases) {
    EXPECT_EQ(0, inChild([&] {
                for (const char* name : NAMES) unsetenv(name);
                drawWithoutGraphicsProcessor(wanted.version);
                EXPECT_EQ(wanted.names, chosen());
              }));
  }
}

TEST(Drawing, IsNotChosenAgainstTheEnvironment) {
  for (const char* set : NAMES) {
    for (const char* value : {"gl", ""}) {
      EXPECT_EQ(0, inChild([&] {
                  for (const char* name : NAMES) unsetenv(name);
                  setenv(set, value, 1);
                  const std::string before = chosen();
                  drawWithoutGraphicsProcessor(8);
                  drawWithoutGraphicsProcessor(18);
                  EXPECT_EQ(before, chosen());
                }));
    }
  }
}

}  // namespace

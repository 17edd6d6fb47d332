// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "app/drawing.h"

#include <cstdlib>

void drawWithoutGraphicsProcessor(unsigned minorVersion) {
  const bool chosen = std::getenv("GSK_RENDERER") != nullptr ||
                      std::getenv("GDK_DEBUG") != nullptr || std::getenv("GDK_DISABLE") != nullptr;
  if (chosen) return;

  // Cairo alone does not keep the toolkit from loading drivers. Were these alone switched off, it
  // would print that it cannot use them.
  setenv("GSK_RENDERER", "cairo", 0);
  constexpr unsigned FIRST_WITH_DISABLE = 16;  // complains about the older name
  if (minorVersion < FIRST_WITH_DISABLE) {
    setenv("GDK_DEBUG", "gl-disable", 0);
  } else {
    setenv("GDK_DISABLE", "gl,vulkan", 0);
  }
}

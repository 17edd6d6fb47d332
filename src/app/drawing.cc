// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "app/drawing.h"

#include <cstdlib>

void drawWithoutGraphicsProcessor(unsigned minorVersion) {
  const bool chosen = std::getenv("GSK_RENDERER") != nullptr ||
                      std::getenv("GDK_DEBUG") != nullptr || std::getenv("GDK_DISABLE") != nullptr;
  if (chosen) return;

  // Both are needed: a toolkit that is only told to draw with cairo loads the drivers all the same,
  // and one that is only told to leave them alone prints that it has none.
  setenv("GSK_RENDERER", "cairo", 0);
  constexpr unsigned FIRST_WITH_DISABLE = 16;  // complains about the older name
  if (minorVersion < FIRST_WITH_DISABLE) {
    setenv("GDK_DEBUG", "gl-disable", 0);
  } else {
    setenv("GDK_DISABLE", "gl,vulkan", 0);
  }
}

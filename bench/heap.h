// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

/** What happened on the heap since the last reset. */
struct HeapUse {
  std::size_t calls = 0;      // that got memory
  std::size_t unitCalls = 0;  // of these, those that did not come from the C library itself
  std::size_t peak = 0;       // most bytes in use at one time, above those at the reset
};

// Weak: there only in the program that was linked with heap.cc, which slows every allocation down.
[[gnu::weak]] void resetHeapUse();
[[gnu::weak]] HeapUse heapUse();

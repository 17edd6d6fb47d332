// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

/**
 * Whether an operation succeeds, be it on a second try. What fails while a file is read or written
 * may pass (a signal, a moment without descriptors or memory), and a caller who takes it for
 * certain loses what the file holds. The one place that decides how often something is tried.
 */
template <typename Operation>
bool succeedsOnRetry(Operation operation) {
  if (operation()) return true;
  return operation();
}

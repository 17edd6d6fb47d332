// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

/**
 * Writes a whole file in a folder where others make files, too: a new one with the mode that the
 * umask says, or over one that is there, whose mode stays. That must be a regular file of the user
 * with no second name; another one, and what a link leads to, is left as it is. Never waits, not
 * even for the reader of a FIFO. What fails is tried once more (base/retry.h).
 *
 * Returns false when there is something else, or it cannot be opened or not be written to the end.
 */
bool writeSharedFile(const std::string& path, std::string_view content);

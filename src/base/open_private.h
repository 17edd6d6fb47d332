// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

/**
 * open() for files that hold passwords. A regular file of the user's that is opened for writing has
 * mode 0600 before its first byte is written, whatever its mode was, or the umask is. The call
 * waits for nobody, not even for the other end of a FIFO, and the descriptor is not inherited by
 * other programs.
 *
 * flags are those of open(). Returns the descriptor, or -1 with errno set.
 */
int openPrivate(const char* path, int flags);

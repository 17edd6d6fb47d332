// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

/**
 * open() for files that hold passwords. A file opened for writing has mode 0600 before the caller
 * can write its first byte, whatever its mode was; with O_EXCL less, where the umask takes rights
 * from the owner. The call never waits, not even for the other end of a FIFO, and the descriptor is
 * not inherited by other programs.
 *
 * flags are those of open(). Returns the descriptor, or -1 with errno set.
 */
int openPrivate(const char* path, int flags);

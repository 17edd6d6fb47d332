// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <cerrno>

/** Has an open file or folder written to the disk. True also where a file system offers no such. */
inline bool flush(int descriptor) { return fsync(descriptor) == 0 || errno == EINVAL; }

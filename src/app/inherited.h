// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

// What the program was started with and changes for itself alone: the environment, which signals
// are blocked, and whether a failing write ends the process (SIGPIPE, SIGXFSZ). A program that it
// starts gets that as it was.

/** Remembers how it is now. To be called before any of it is changed. */
void keepInherited();

/**
 * Puts it back, in a child process that is about to become another program. Changes nothing where
 * keepInherited() was not called.
 */
void restoreInherited();

// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

/**
 * Has the toolkit draw without a graphics processor: loading a driver takes more time and memory
 * than all else that this window does. To be called before the toolkit starts, which is told by the
 * environment. Where that chooses a way of drawing already, it stays as it is.
 *
 * minorVersion: of GTK 4 as it is at run time; the names of its switches depend on it.
 */
void drawWithoutGraphicsProcessor(unsigned minorVersion);
